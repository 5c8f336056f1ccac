#pragma once

#include <Player.h>

#include <QCommandLineParser>
#include <QList>
#include <QSize>
#include <QString>

#include <optional>

// The options of all commands that draw.
struct DrawingOptions
{
    static QList<QCommandLineOption> declared();

    // Functions that can fail return false, with the reason in `error`.
    static bool parse(const QCommandLineParser &parser, DrawingOptions &options, QString &error);

    // Makes a player of the preset with these options. Its source is still to be opened; that also
    // sets its size.
    bool loadPlayer(const QString &shadersDir, const QString &preset,
                    OffscreenRenderer::Outputs outputs, std::optional<Player> &player,
                    QString &error) const;
    // Opens the source for the first player, and prints a line if its shape is not kept.
    bool openSource(Player &player, QString &error);

    QString source;
    SourcePicture sourcePicture;
    QString device;
    QSize size;
    bool keepsShape = true; // then `size` is the largest that is drawn
    QString valuesFile; // set before `values`
    QList<std::pair<QString, QString>> values; // id and number, as given
    std::optional<int> frames;
    bool isBackwards = false;
    std::optional<float> headroom;
};

// Sets a parameter to a number within its range.
bool setValue(Player &player, const QString &id, const QString &number, QString &error);

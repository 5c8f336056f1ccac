#pragma once

#include "GraphRenderer.h"

#include <VulkanRenderGraph.h>

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMap>
#include <QString>

#include <optional>

// What a picture of a graph can show beside the graph itself; what is empty is not shown.
struct GraphPictureExtras
{
    QHash<QString, float> values; // of parameters, by id
    QList<PassResult> passes; // as drawn: their sizes stand for the rules that gave them
    QMap<int, QByteArray> thumbnails; // PNG files by pass, or by ResourceRef::SourceImage
};

// The graph in Graphviz's language: a box for each pass, an arrow for each sampled image with its
// binding, dashed for a pass's own history, and a dotted arrow for a size taken from a pass that is
// named for it. Thumbnails are asked for by the names under which graphSvg() knows them.
QByteArray graphDot(const QString &title, const VulkanRenderGraph &graph,
                    const GraphPictureExtras &extras = {});

// What Graphviz's program "dot" draws of it, the thumbnails inside. Nothing, and `error` says what
// to do, if there is no such program or it fails.
std::optional<QByteArray> graphSvg(const QByteArray &dot, const QMap<int, QByteArray> &thumbnails,
                                   QString &error);

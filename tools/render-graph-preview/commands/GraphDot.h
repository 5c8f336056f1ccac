#pragma once

#include <OffscreenRenderer.h>
#include <VulkanRenderGraph.h>

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QMap>
#include <QString>

// What a graph's boxes show beside the graph itself. Empty fields are not shown.
struct GraphDotExtras
{
    QHash<QString, float> values; // of parameters, by id
    QList<PassResult> passes; // sizes in pixels, instead of the rules for them
    QMap<int, QByteArray> thumbnails; // PNG files by pass, or by ResourceRef::SourceImage
    QSize sourceSize = {};
};

// The graph in Graphviz's DOT language: a box for each pass, an arrow for each sampled image with
// its binding, dashed if it is the pass's own history, and a dotted arrow from the pass whose size
// another one refers to, all explained in a legend. Refers to thumbnails by the file names that
// graphSvg() gives them.
QByteArray graphDot(const QString &title, const VulkanRenderGraph &graph,
                    const GraphDotExtras &extras = {});

// Converts DOT to SVG by Graphviz's program "dot", with the thumbnails embedded. On failure, also
// if there is no such program, returns false, with the reason in `error`.
bool graphSvg(const QByteArray &dot, const QMap<int, QByteArray> &thumbnails, QByteArray &svg,
              QString &error);

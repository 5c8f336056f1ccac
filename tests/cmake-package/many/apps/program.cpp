#include MANIFEST

#include <QObject>

#include <iterator>

#ifndef MAIN
#define MAIN main
#endif

class Renderer : public QObject
{
    Q_OBJECT
};

int MAIN()
{
    const auto &stock = *std::rbegin(RenderGraphManifestData::kPresets);
    return stock.usesFrameCount == MOVES ? 0 : 1;
}

#include "program.moc"

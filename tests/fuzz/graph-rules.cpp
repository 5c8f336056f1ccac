// Compares VulkanRenderGraph::isValid() with PlainGraph, for a graph that keeps the rules and that
// the input then changes.
#include "../GraphText.h"
#include "Fuzz.h"
#include "PlainGraph.h"

namespace {

using Graph = VulkanRenderGraph;

QString idOf(Bytes &bytes)
{
    return {QChar(static_cast<char16_t>(u'a' + bytes.below(4)))};
}

Graph soundGraph(int passCount)
{
    Graph graph;
    for (int index = 0; index < passCount; ++index) {
        Graph::Pass pass;
        pass.fragmentSpirvResource = QStringLiteral("f");
        pass.vertexSpirvResource = QStringLiteral("v");
        pass.isFinalPass = index == passCount - 1;
        pass.sampledInputs.append(VulkanRenderGraph::ResourceRef{index == 0 ? -2 : index - 1});
        graph.passes.append(pass);
    }
    return graph;
}

void bindSlots(Graph::Pass &pass, Bytes &bytes)
{
    const int count = 13 + bytes.below(4);
    pass.params.clear();
    for (int slot = 0; slot < count; ++slot)
        pass.params.append({idOf(bytes), static_cast<unsigned>(slot)});
}

// The two special kinds, which single changes hardly reach.
void makeSpecial(Graph::Pass &pass, Bytes &bytes)
{
    pass.sampledInputs.clear();
    pass.cacheByParameters = bytes.flag();
    if (pass.cacheByParameters) {
        pass.scaleSource = Graph::ScaleSource::Absolute;
    } else {
        pass.constantBlackWhenZero = idOf(bytes);
        pass.params = {{pass.constantBlackWhenZero, 0}};
        pass.shareConstantBlack = bytes.flag();
        pass.wrapMode = 1;
    }
}

using Pass = Graph::Pass;
using Input = Graph::ResourceRef;

constexpr void (*kChanges[])(Pass &, Bytes &) = {
        [](Pass &pass, Bytes &bytes) { pass.isFeedbackTarget = bytes.flag(); },
        [](Pass &pass, Bytes &bytes) { pass.isFeedbackReader = bytes.flag(); },
        [](Pass &pass, Bytes &bytes) { pass.isFinalPass = bytes.flag(); },
        [](Pass &pass, Bytes &bytes) {
            pass.fragmentSpirvResource = bytes.flag() ? QStringLiteral("f") : QString();
        },
        [](Pass &pass, Bytes &bytes) {
            pass.vertexSpirvResource = bytes.flag() ? QStringLiteral("v") : QString();
        },
        [](Pass &pass, Bytes &) { pass.sampledInputs.clear(); },
        [](Pass &pass, Bytes &bytes) { pass.sampledInputs.append(Input{bytes.below(11) - 4}); },
        [](Pass &pass, Bytes &bytes) {
            pass.sampledInputs.append(Input{static_cast<int>(bytes.word())});
        },
        [](Pass &pass, Bytes &bytes) { pass.sampledInputs = QList<Input>(7 + bytes.below(3)); },
        [](Pass &pass, Bytes &bytes) {
            pass.params.append({idOf(bytes), static_cast<unsigned>(bytes.below(18))});
        },
        [](Pass &pass, Bytes &bytes) {
            pass.params.append({idOf(bytes), bytes.word()});
        },
        bindSlots,
        [](Pass &pass, Bytes &bytes) { pass.shareConstantBlack = bytes.flag(); },
        [](Pass &pass, Bytes &bytes) { pass.wrapMode = bytes.below(5) - 1; },
        [](Pass &pass, Bytes &bytes) {
            pass.constantBlackWhenZero = bytes.flag() ? idOf(bytes) : QString();
        },
        [](Pass &pass, Bytes &bytes) { pass.constantBlackAlpha = bytes.number(); },
        [](Pass &pass, Bytes &bytes) { pass.mipmap = bytes.flag(); },
        [](Pass &pass, Bytes &bytes) { pass.cacheByParameters = bytes.flag(); },
        [](Pass &pass, Bytes &bytes) {
            pass.scaleSource = static_cast<Graph::ScaleSource>(bytes.below(4));
        },
        [](Pass &pass, Bytes &bytes) { pass.scaleInputPassIndex = bytes.below(10) - 3; },
        makeSpecial,
};

void change(Graph &graph, Bytes &bytes)
{
    const int field = bytes.below(1 + static_cast<int>(std::size(kChanges)));
    if (field == 0 || graph.passes.isEmpty()) {
        graph.feedbackPassIndex = bytes.below(10) - 3;
        return;
    }
    Pass &pass = graph.passes[bytes.below(static_cast<int>(graph.passes.size()))];
    kChanges[field - 1](pass, bytes);
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    Bytes bytes(data, size);
    Graph graph = soundGraph(bytes.below(7));
    while (!bytes.isEmpty())
        change(graph, bytes);
    expectSame("isValid", graphText(graph), graph.isValid() ? "valid" : "invalid",
               PlainGraph::keepsTheRules(graph) ? "valid" : "invalid");
    return 0;
}

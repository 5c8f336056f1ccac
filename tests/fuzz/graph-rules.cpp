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

void change(Graph &graph, Bytes &bytes)
{
    const int field = bytes.below(22);
    if (field == 0 || graph.passes.isEmpty()) {
        graph.feedbackPassIndex = bytes.below(10) - 3;
        return;
    }
    Graph::Pass &pass = graph.passes[bytes.below(static_cast<int>(graph.passes.size()))];
    switch (field) {
    case 1:
        pass.isFeedbackTarget = bytes.flag();
        break;
    case 2:
        pass.isFeedbackReader = bytes.flag();
        break;
    case 3:
        pass.isFinalPass = bytes.flag();
        break;
    case 4:
        pass.fragmentSpirvResource = bytes.flag() ? QStringLiteral("f") : QString();
        break;
    case 5:
        pass.vertexSpirvResource = bytes.flag() ? QStringLiteral("v") : QString();
        break;
    case 6:
        pass.sampledInputs.clear();
        break;
    case 7:
        pass.sampledInputs.append(VulkanRenderGraph::ResourceRef{bytes.below(11) - 4});
        break;
    case 8:
        pass.sampledInputs.append(VulkanRenderGraph::ResourceRef{static_cast<int>(bytes.word())});
        break;
    case 9:
        pass.sampledInputs = QList<Graph::ResourceRef>(7 + bytes.below(3));
        break;
    case 10:
        pass.params.append({idOf(bytes), static_cast<unsigned>(bytes.below(18))});
        break;
    case 11:
        pass.params.append({idOf(bytes), bytes.word()});
        break;
    case 12: {
        const int count = 13 + bytes.below(4);
        pass.params.clear();
        for (int slot = 0; slot < count; ++slot)
            pass.params.append({idOf(bytes), static_cast<unsigned>(slot)});
        break;
    }
    case 13:
        pass.shareConstantBlack = bytes.flag();
        break;
    case 14:
        pass.wrapMode = bytes.below(5) - 1;
        break;
    case 15:
        pass.constantBlackWhenZero = bytes.flag() ? idOf(bytes) : QString();
        break;
    case 16:
        pass.constantBlackAlpha = bytes.number();
        break;
    case 17:
        pass.mipmap = bytes.flag();
        break;
    case 18:
        pass.cacheByParameters = bytes.flag();
        break;
    case 19:
        pass.scaleSource = static_cast<Graph::ScaleSource>(bytes.below(4));
        break;
    case 20:
        pass.scaleInputPassIndex = bytes.below(10) - 3;
        break;
    default: // the two special kinds, which single changes hardly reach
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
        break;
    }
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

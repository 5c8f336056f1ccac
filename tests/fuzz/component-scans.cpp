// Compares the scans of one component's source with PlainSource. The input's last byte decides how
// the text lies across a reader's buffers, so any ASCII file is a seed.
#include "Fuzz.h"
#include "PlainSource.h"

#include <ComponentSource.h>

namespace {

QByteArray texts(const QStringList &list)
{
    QByteArray text;
    for (const QString &line : list)
        text += QByteArray(reinterpret_cast<const char *>(line.utf16()), line.size() * 2).toHex()
                + "  " + line.toUtf8() + '\n';
    return text;
}

template<typename Numbers>
QByteArray numbers(const Numbers &values)
{
    QByteArray text;
    for (const int value : std::set<int>(values.begin(), values.end()))
        text += QByteArray::number(value) + ' ';
    return text;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size - 1));
    const QByteArray file = acrossBuffers(bytes, data[size - 1]);
    if (!PlainText::isWellDefined(file))
        return 0;
    static const QString path = fuzzDirectory() + QStringLiteral("/component.slang");
    putFile(path, file);
    expectSame("strippedCodeLines", bytes, texts(strippedCodeLines(path)),
               texts(PlainSource::codeLines(bytes)));
    expectSame("usedParamSlotIndices", bytes, numbers(usedParamSlotIndices(path)),
               numbers(PlainSource::usedSlots(bytes)));
    expectSame("declaredAliasInputs", bytes, texts(declaredAliasInputs(path)),
               texts(PlainSource::directives(bytes, "input")));
    expectSame("declaredParameterIds", bytes, texts(declaredParameterIds(path)),
               texts(PlainSource::directives(bytes, "param")));
    expectSame("sourceUsesFrameCount", bytes, numbers(QList<int>{sourceUsesFrameCount(path)}),
               numbers(QList<int>{PlainSource::readsField(
                       bytes, {QStringLiteral("frameCount"), QStringLiteral("frameDirection")})}));
    expectSame("sourceReadsHdrOutputActive", bytes,
               numbers(QList<int>{sourceReadsHdrOutputActive(path)}),
               numbers(QList<int>{
                       PlainSource::readsField(bytes, {QStringLiteral("hdrOutputActive")})}));
    return 0;
}

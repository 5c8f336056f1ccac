// Replaces libFuzzer: runs the target once for each file on the command line.
#include "Fuzz.h"

int main(int argc, char *argv[])
{
    for (int i = 1; i < argc; ++i) {
        const QByteArray seed = fileContent(QString::fromLocal8Bit(argv[i]));
        LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t *>(seed.constData()),
                               static_cast<std::size_t>(seed.size()));
    }
    return argc > 1 ? 0 : 1;
}

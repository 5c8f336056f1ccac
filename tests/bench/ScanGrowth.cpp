// bench-scans <shape> <MiB>: scans a file of this shape and size for slots, frame tokens and
// parameter ids. Prints the speed of each scan in MiB/s, and their peak memory in bytes per byte of
// the file.
#include "ComponentSource.h"

#include <QFile>
#include <QTemporaryDir>

#include <sys/resource.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <limits>

namespace {

constexpr double kMiB = 1024 * 1024;
constexpr int kRuns = 5;

// A file repeats `piece`, in which %1 stands for the number of the repetition modulo `numbers`.
struct Shape
{
    const char *name;
    const char *piece;
    int numbers;
};

constexpr Shape kShapes[] = {
        {"shortest-lines", "x;\n", 1},
        {"short-lines", "vec3 c = f(uv);\n", 1},
        {"commented-lines", "    x = x * pc.scale; // nothing to see here\n", 1},
        {"one-line", "vec3 c = f(uv); ", 1},
        {"directives", "//! param p%1\n", std::numeric_limits<int>::max()},
        {"slot-reads", "x += pc.params[%1];\n", 32},
        {"slot-reads-one-line", "x += pc.params[%1]; ", 32},
};

bool writeFile(const QString &path, const Shape &shape, double size)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    QByteArray piece = shape.piece;
    const bool numbered = piece.contains("%1");
    for (int i = 0; static_cast<double>(file.pos()) < size; ++i) {
        if (numbered)
            piece = QByteArray(shape.piece).replace("%1", QByteArray::number(i % shape.numbers));
        if (file.write(piece) != piece.size())
            return false;
    }
    return true;
}

double cpuSeconds()
{
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

double peakMemory()
{
    rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) * 1024; // ru_maxrss is in KiB
}

// Returns the shortest of several runs, since other load can only make a run longer.
template<typename Scan>
double seconds(Scan scan)
{
    double least = std::numeric_limits<double>::infinity();
    for (int run = 0; run < kRuns; ++run) {
        const double start = cpuSeconds();
        scan();
        least = std::min(least, cpuSeconds() - start);
    }
    return least;
}

} // namespace

int main(int argc, char *argv[])
{
    const auto *const shape = std::ranges::find_if(kShapes, [argc, argv](const Shape &candidate) {
        return argc == 3 && std::strcmp(argv[1], candidate.name) == 0;
    });
    if (shape == std::ranges::end(kShapes)) {
        std::fputs("usage: bench-scans <shape> <MiB>\n", stderr);
        return 2;
    }

    const double size = std::atof(argv[2]) * kMiB;
    const QTemporaryDir directory;
    const QString path = directory.filePath(QStringLiteral("component.slang"));
    if (!writeFile(path, *shape, size)) {
        std::perror("bench-scans");
        return 1;
    }

    const double memoryBefore = peakMemory();
    const double slots = seconds([&path] { usedParamSlotIndices(path); });
    const double frame = seconds([&path] { sourceUsesFrameCount(path); });
    const double ids = seconds([&path] { declaredParameterIds(path); });
    const double mebibytes = size / kMiB;
    std::printf("%.0f %.0f %.0f %.2f\n", mebibytes / slots, mebibytes / frame, mebibytes / ids,
                (peakMemory() - memoryBefore) / size);
    return 0;
}

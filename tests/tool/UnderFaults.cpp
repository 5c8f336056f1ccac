// Runs a program where something fails:
//     under-faults <fault>[=<number>]... -- <program> <argument>...
// It becomes that program, so that whoever started it waits for, and kills, the right one.

#include <sys/prctl.h>
#include <sys/resource.h>

#include <linux/capability.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include <fcntl.h>
#include <unistd.h>

namespace {

struct Fault
{
    std::string_view name;
    bool (*make)(int number);
};

bool fill(int stream)
{
    return ::dup2(::open("/dev/full", O_WRONLY | O_CLOEXEC), stream) >= 0;
}

bool breakPipe(int stream)
{
    int ends[2];
    return ::pipe2(ends, O_CLOEXEC) == 0 && ::dup2(ends[1], stream) >= 0;
}

template<auto resource>
bool limit(int to)
{
    const rlimit both = {rlim_t(to), rlim_t(to)};
    return ::setrlimit(resource, &both) == 0;
}

// Root may open anything, until it gives that up; others cannot, and need not.
bool obeyPermissions(int /*number*/)
{
    ::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE);
    ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH);
    return true;
}

constexpr Fault kFaults[] = {
        {"closed", [](int stream) { return ::close(stream) == 0; }},
        {"full", fill},
        {"broken-pipe", breakPipe},
        {"ignored", [](int signal) { return ::signal(signal, SIG_IGN) != SIG_ERR; }},
        {"cpu-seconds", limit<RLIMIT_CPU>},
        {"core-size", limit<RLIMIT_CORE>},
        {"file-size", limit<RLIMIT_FSIZE>},
        {"address-space", limit<RLIMIT_AS>},
        {"permissions", obeyPermissions},
};

bool make(std::string_view word)
{
    const std::size_t end = word.find('=');
    for (const Fault &fault : kFaults) {
        // What the word views ends with it.
        if (fault.name == word.substr(0, end))
            return fault.make(end == std::string_view::npos ? 0 : std::atoi(word.data() + end + 1));
    }
    return false;
}

} // namespace

int main(int argc, char *argv[])
{
    int i = 1;
    for (; i < argc && argv[i] != std::string_view("--"); ++i) {
        if (!make(argv[i])) {
            std::fprintf(stderr, "under-faults: cannot make '%s'\n", argv[i]);
            return 125;
        }
    }
    if (i + 1 < argc)
        ::execvp(argv[i + 1], argv + i + 1);
    std::perror("under-faults");
    return 127;
}

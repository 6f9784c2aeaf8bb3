// Starts a program with the CLOCK_MONOTONIC time of its exec in
// NVK_REPORT_FIRST_PAINT, so that the start-up benchmark counts from the
// exec itself. Stamped in the benchmark, the time also held what QProcess
// does before it forks (pipes, the environment, the program's path): a few
// milliseconds more on every start, which made the ratios look better than
// the programs are.
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <unistd.h>

int main(int argc, char *argv[])
{
    if (argc < 2)
    {
        std::fprintf(stderr, "usage: stamp_exec program [arguments]\n");
        return 2;
    }
    timespec now{};
    clock_gettime(CLOCK_MONOTONIC, &now);
    char stamp[32];
    std::snprintf(stamp, sizeof stamp, "%lld", static_cast<long long>(now.tv_sec) * 1000000000LL + now.tv_nsec);
    setenv("NVK_REPORT_FIRST_PAINT", stamp, 1);
    execv(argv[1], argv + 1);
    std::perror(argv[1]);
    return 127;
}

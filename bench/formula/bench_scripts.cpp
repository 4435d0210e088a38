// Small scripts run by our interpreter and by Lua 5.4 and Python 3, in
// rounds: each round runs every script once on each of the three, in an order
// that turns from round to round, so that a change of the machine's load
// falls on all sides alike.  Each run is a process of its own: ours is a fork
// of this program that compiles and runs the script in process, the peers are
// `lua5.4` and `python3` started on their versions of the script.  What is
// measured is the child's CPU time (user + system) and its peak resident
// memory, as the kernel reports them when the child ends.  The median of the
// rounds is printed, with the ratios against each peer.
//
//   bench_scripts [--rounds N] [--only NAME] [--markdown]
//
// The scripts lie beside this file (scripts/NAME.tarn, .lua, .py).  A peer
// that is not installed is left out of the table.

#include "functions/rpnfunctions.h"
#include "formula/rpndata.h"
#include "formula/rpntree.h"

#include <QFile>
#include <QString>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#ifndef TARN_BENCH_SCRIPTS_DIR
#define TARN_BENCH_SCRIPTS_DIR "."
#endif

namespace {

const char *const kScripts[] = {"loop", "fib", "append", "spread", "concat", "table", "addto", "find"};
const char *const kDescriptions[] = {
    "while loop, 10 x 10^6 rounds, a counter and a sum",
    "fib(30), recursive user function",
    "10^6 appends to an array, then a sum",
    "sqrt(a*a+1) over a 10^6-cell array, then a sum",
    "10^5 appends of \"ab\" to a text",
    "10^5-line text table to a dictionary of columns, a sum",
    "10^6 cells added with AddToArray, then a sum",
    "Find in a 10 MB text, ten times",
};
constexpr int kScriptCount = int(sizeof kScripts / sizeof kScripts[0]);

enum Side { Tarn, Lua, Python, SideCount };
const char *const kSideNames[] = {"tarn", "lua5.4", "python3"};

struct Sample
{
    double cpu = -1.0; // seconds; negative when the run failed
    double peakMb = 0.0;
};

std::string scriptPath(const char *name, const char *extension)
{
    return std::string(TARN_BENCH_SCRIPTS_DIR) + "/" + name + "." + extension;
}

bool onPath(const char *program)
{
    const char *path = std::getenv("PATH");
    if (!path)
        return false;
    std::string all = path;
    std::size_t start = 0;
    while (start <= all.size()) {
        const std::size_t end = std::min(all.find(':', start), all.size());
        const std::string candidate = all.substr(start, end - start) + "/" + program;
        if (access(candidate.c_str(), X_OK) == 0)
            return true;
        start = end + 1;
    }
    return false;
}

// The child's side of a run of ours: compile, run, and end without printing
// (printing a million-cell value would measure the formatter).  The exit
// status says whether the run went well.
[[noreturn]] void runTarnChild(const char *name)
{
    QFile file(QString::fromStdString(scriptPath(name, "tarn")));
    if (!file.open(QIODevice::ReadOnly))
        _exit(3);
    const QString text = QString::fromUtf8(file.readAll());
    file.close();
    int good = 0;
    {
        CEquationTree tree;
        if (tree.Compile(text, nullptr, true)) {
            CRpnData value;
            good = tree.Run(value) == 1 && !tree.HasError();
        }
    }
    _exit(good ? 0 : 4);
}

Sample finish(pid_t pid)
{
    Sample s;
    int status = 0;
    rusage usage{};
    if (wait4(pid, &status, 0, &usage) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return s;
    s.cpu = double(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
            1e-6 * double(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
    s.peakMb = double(usage.ru_maxrss) / 1024.0; // kilobytes on Linux
    return s;
}

Sample runOne(Side side, const char *name)
{
    std::fflush(stdout);
    const pid_t pid = fork();
    if (pid < 0)
        return {};
    if (pid == 0) {
        const int devNull = open("/dev/null", O_WRONLY);
        if (devNull >= 0)
            dup2(devNull, STDOUT_FILENO);
        if (side == Tarn)
            runTarnChild(name);
        const std::string path = scriptPath(name, side == Lua ? "lua" : "py");
        const char *program = kSideNames[side];
        execlp(program, program, path.c_str(), static_cast<char *>(nullptr));
        _exit(127);
    }
    return finish(pid);
}

double median(std::vector<double> v)
{
    v.erase(std::remove_if(v.begin(), v.end(), [](double x) { return x < 0; }), v.end());
    if (v.empty())
        return -1.0;
    std::sort(v.begin(), v.end());
    const std::size_t n = v.size();
    return n % 2 ? v[n / 2] : 0.5 * (v[n / 2 - 1] + v[n / 2]);
}

std::string ratio(double a, double b)
{
    if (a <= 0 || b <= 0)
        return "-";
    char text[32];
    std::snprintf(text, sizeof text, "%.2f", a / b);
    return text;
}

std::string cell(double seconds, double mb)
{
    if (seconds < 0)
        return "failed";
    char text[48];
    std::snprintf(text, sizeof text, "%.3f s, %.1f MB", seconds, mb);
    return text;
}

} // namespace

int main(int argc, char **argv)
{
    int rounds = 5;
    bool markdown = false;
    std::string only;
    for (int i = 1; i < argc; ++i) {
        if (!std::strcmp(argv[i], "--rounds") && i + 1 < argc)
            rounds = std::max(1, std::atoi(argv[++i]));
        else if (!std::strcmp(argv[i], "--only") && i + 1 < argc)
            only = argv[++i];
        else if (!std::strcmp(argv[i], "--markdown"))
            markdown = true;
        else {
            std::fprintf(stderr, "usage: %s [--rounds N] [--only NAME] [--markdown]\n", argv[0]);
            return 2;
        }
    }
    RegisterFunctionLibrary();
    bool present[SideCount] = {true, onPath("lua5.4"), onPath("python3")};

    // samples[script][side] over the rounds
    std::vector<std::vector<Sample>> samples[kScriptCount];
    for (auto &s : samples)
        s.assign(SideCount, {});
    for (int round = 0; round < rounds; ++round) {
        for (int k = 0; k < kScriptCount; ++k) {
            if (!only.empty() && only != kScripts[k])
                continue;
            for (int j = 0; j < SideCount; ++j) {
                const Side side = Side((j + round) % SideCount);
                if (!present[side])
                    continue;
                const Sample s = runOne(side, kScripts[k]);
                samples[k][side].push_back(s);
                std::fprintf(stderr, "round %d %-7s %-8s %s\n", round + 1, kScripts[k], kSideNames[side],
                             cell(s.cpu, s.peakMb).c_str());
            }
        }
    }

    std::printf("\nMedians of %d rounds, CPU time (user + system) and peak resident memory of each run.\n", rounds);
    std::printf("The ratios are ours divided by the peer's: below 1 we are faster.\n\n");
    if (markdown) {
        std::printf("| script | tarn | Lua 5.4 | Python 3 | tarn/Lua | tarn/Python | memory tarn/Lua |\n");
        std::printf("|---|---|---|---|---|---|---|\n");
    } else {
        std::printf("%-52s %-20s %-20s %-20s %9s %12s %9s\n", "script", "tarn", "lua5.4", "python3", "t/lua",
                    "t/python", "mem t/lua");
    }
    int failures = 0;
    for (int k = 0; k < kScriptCount; ++k) {
        if (samples[k][Tarn].empty())
            continue;
        double cpu[SideCount], mb[SideCount];
        for (int side = 0; side < SideCount; ++side) {
            std::vector<double> c, m;
            for (const Sample &s : samples[k][side]) {
                c.push_back(s.cpu);
                m.push_back(s.cpu < 0 ? -1.0 : s.peakMb);
            }
            cpu[side] = median(c);
            mb[side] = median(m);
        }
        if (cpu[Tarn] < 0)
            ++failures;
        const std::string t = cell(cpu[Tarn], mb[Tarn]);
        const std::string l = present[Lua] ? cell(cpu[Lua], mb[Lua]) : "-";
        const std::string p = present[Python] ? cell(cpu[Python], mb[Python]) : "-";
        const std::string rl = ratio(cpu[Tarn], cpu[Lua]), rp = ratio(cpu[Tarn], cpu[Python]);
        const std::string rm = ratio(mb[Tarn], mb[Lua]);
        if (markdown)
            std::printf("| %s | %s | %s | %s | %s | %s | %s |\n", kDescriptions[k], t.c_str(), l.c_str(), p.c_str(),
                        rl.c_str(), rp.c_str(), rm.c_str());
        else
            std::printf("%-52s %-20s %-20s %-20s %9s %12s %9s\n", kDescriptions[k], t.c_str(), l.c_str(), p.c_str(),
                        rl.c_str(), rp.c_str(), rm.c_str());
    }
    if (failures)
        std::printf("\n%d of our scripts failed to run.\n", failures);
    return failures ? 1 : 0;
}

// Small scripts run by our interpreter and by Lua 5.4 and Python 3, in
// rounds: each round runs every script once on each of the three, in an order
// that turns from round to round, so that a change of the machine's load
// falls on all sides alike.  Each run is a process of its own, started from
// its program file: ours is this program again (`--run FILE`), which starts
// up as tarn-calc does (the application object, the language texts, the
// function library), compiles and runs the script and ends without printing
// its value; the peers are `lua5.4` and `python3` on their versions of the
// script.  (A fork of this process would not do for the memory: a forked
// child counts only the pages it touches after the fork, so the libraries
// its parent had loaded would be missing from its peak.)
//
// What is measured is the child's CPU time (user + system) and its peak
// resident memory, as the kernel reports them when the child ends.  The peak
// counts the pages of the program and its shared libraries that the process
// touched as well as its own data; the empty script, run in the same rounds,
// gives each interpreter's peak with nothing to do, and the peak of a script
// above that is printed beside the total.  The median of the rounds is
// printed, with the ratios against each peer.
//
//   bench_scripts [--rounds N] [--only NAME] [--markdown]
//
// The scripts lie beside this file (scripts/NAME.tarn, .lua, .py).  A peer
// that is not installed is left out of the table.

#include "functions/rpnfunctions.h"
#include "formula/rpndata.h"
#include "formula/rpntree.h"
#include "support/languagestring.h"

#include <QCoreApplication>
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

// The first, an empty script, is each interpreter's baseline.
const char *const kScripts[] = {"empty",  "loop",   "fib",   "fiblocal", "fibtext", "append",
                                "spread", "concat", "table", "addto",    "find"};
const char *const kDescriptions[] = {
    "empty script: the interpreter starting and ending",
    "while loop, 10 x 10^6 rounds, a counter and a sum",
    "fib(30), recursive user function",
    "fib(30) with a local variable in the body",
    "fib(30) with a text in the body (ordinary calls)",
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

// A run of ours, in a process of its own: start up as tarn-calc does,
// compile, run, and end without printing (printing a million-cell value would
// measure the formatter).  The exit status says whether the run went well.
int runTarnScript(int argc, char **argv, const char *path)
{
    QCoreApplication app(argc, argv);
    if (!LoadLanguageModule())
        return 5;
    RegisterFunctionLibrary();
    QFile file(QString::fromLocal8Bit(path));
    if (!file.open(QIODevice::ReadOnly))
        return 3;
    const QString text = QString::fromUtf8(file.readAll());
    file.close();
    CEquationTree tree;
    if (!tree.Compile(text, nullptr, true))
        return 4;
    CRpnData value;
    return tree.Run(value) == 1 && !tree.HasError() ? 0 : 4;
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
    const std::string path = scriptPath(name, side == Tarn ? "tarn" : side == Lua ? "lua" : "py");
    const pid_t pid = fork();
    if (pid < 0)
        return {};
    if (pid == 0) {
        const int devNull = open("/dev/null", O_WRONLY);
        if (devNull >= 0)
            dup2(devNull, STDOUT_FILENO);
        if (side == Tarn) {
            execl("/proc/self/exe", "bench_scripts", "--run", path.c_str(), static_cast<char *>(nullptr));
        } else {
            const char *program = kSideNames[side];
            execlp(program, program, path.c_str(), static_cast<char *>(nullptr));
        }
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

// The peak above the empty script's.
std::string above(double mb, double baseline)
{
    if (mb < 0 || baseline < 0)
        return "-";
    char text[32];
    std::snprintf(text, sizeof text, "%+.1f", mb - baseline);
    return text;
}

// The ratio of the peaks above the baselines, where the peer's is large
// enough (half a megabyte) for a ratio to mean something.
std::string aboveRatio(double mb, double baseline, double peerMb, double peerBaseline)
{
    if (mb < 0 || baseline < 0 || peerMb < 0 || peerBaseline < 0 || peerMb - peerBaseline < 0.5)
        return "-";
    return ratio(std::max(mb - baseline, 0.0), peerMb - peerBaseline);
}

} // namespace

int main(int argc, char **argv)
{
    if (argc == 3 && !std::strcmp(argv[1], "--run"))
        return runTarnScript(argc, argv, argv[2]);
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
    bool present[SideCount] = {true, onPath("lua5.4"), onPath("python3")};

    // samples[script][side] over the rounds
    std::vector<std::vector<Sample>> samples[kScriptCount];
    for (auto &s : samples)
        s.assign(SideCount, {});
    for (int round = 0; round < rounds; ++round) {
        for (int k = 0; k < kScriptCount; ++k) {
            if (k > 0 && !only.empty() && only != kScripts[k])
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
    std::printf("The ratios are ours divided by the peer's: below 1 we are faster.  \"Above empty\" is the peak\n"
                "above the empty script's, in MB (tarn, Lua, Python), and its ratio ours to Lua's where Lua's\n"
                "is at least 0.5 MB.\n\n");
    if (markdown) {
        std::printf("| script | tarn | Lua 5.4 | Python 3 | tarn/Lua | tarn/Python | memory tarn/Lua "
                    "| above empty, MB | above empty tarn/Lua |\n");
        std::printf("|---|---|---|---|---|---|---|---|---|\n");
    } else {
        std::printf("%-52s %-20s %-20s %-20s %7s %9s %9s %18s %9s\n", "script", "tarn", "lua5.4", "python3", "t/lua",
                    "t/python", "mem t/lua", "above empty", "t/lua");
    }
    int failures = 0;
    double cpu[kScriptCount][SideCount], mb[kScriptCount][SideCount];
    for (int k = 0; k < kScriptCount; ++k) {
        for (int side = 0; side < SideCount; ++side) {
            std::vector<double> c, m;
            for (const Sample &s : samples[k][side]) {
                c.push_back(s.cpu);
                m.push_back(s.cpu < 0 ? -1.0 : s.peakMb);
            }
            cpu[k][side] = median(c);
            mb[k][side] = median(m);
        }
    }
    for (int k = 0; k < kScriptCount; ++k) {
        if (samples[k][Tarn].empty())
            continue;
        const double *c = cpu[k], *m = mb[k], *base = mb[0];
        if (c[Tarn] < 0)
            ++failures;
        const std::string t = cell(c[Tarn], m[Tarn]);
        const std::string l = present[Lua] ? cell(c[Lua], m[Lua]) : "-";
        const std::string p = present[Python] ? cell(c[Python], m[Python]) : "-";
        const std::string rl = ratio(c[Tarn], c[Lua]), rp = ratio(c[Tarn], c[Python]);
        const std::string rm = ratio(m[Tarn], m[Lua]);
        const std::string own = above(m[Tarn], base[Tarn]) + ", " + above(m[Lua], base[Lua]) + ", "
                                + above(m[Python], base[Python]);
        const std::string ro = k == 0 ? "-" : aboveRatio(m[Tarn], base[Tarn], m[Lua], base[Lua]);
        if (markdown)
            std::printf("| %s | %s | %s | %s | %s | %s | %s | %s | %s |\n", kDescriptions[k], t.c_str(), l.c_str(),
                        p.c_str(), rl.c_str(), rp.c_str(), rm.c_str(), own.c_str(), ro.c_str());
        else
            std::printf("%-52s %-20s %-20s %-20s %7s %9s %9s %18s %9s\n", kDescriptions[k], t.c_str(), l.c_str(),
                        p.c_str(), rl.c_str(), rp.c_str(), rm.c_str(), own.c_str(), ro.c_str());
    }
    if (failures)
        std::printf("\n%d of our scripts failed to run.\n", failures);
    return failures ? 1 : 0;
}

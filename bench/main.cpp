// tnw-bench: times the four workloads through the library and its rivals side by side.
//
// The parent process makes the inputs, then runs each implementation of each workload in a
// child process of its own (this program again, with --child), so that the peak memory that
// wait4 reports belongs to that implementation alone. The child times several runs and prints
// the times and what it did; the parent checks that every implementation did the same work and
// prints one table per workload.
#include <dlfcn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Inputs.h"
#include "Rival.h"

namespace tnw::bench {
const Implementation* LibraryImplementation();  // Library.cpp
}

namespace {

using namespace tnw::bench;
namespace fs = std::filesystem;

constexpr const char* kLibrary = "library";
constexpr const char* kRivals[] = {"shapelib", "gdal", "hand"};
// A hand-written program that does only the job: the library's CPU time against it is the
// yardstick that does not move with the cost of a system call.
constexpr const char* kYardstick = "hand";
constexpr double kYardstickTarget = 1.5;
constexpr double kMemoryTargetMiB = 32.0;

struct WorkloadInfo {
    Workload eWorkload;
    const char* sId;
    const char* sTitle;
    const char* sSetName;  // base name of the written set; nullptr for the readers
    const char* sRival;    // the rival that the target is set against
    double dTarget;        // rival time / library time to reach
};
constexpr WorkloadInfo kWorkloads[] = {
    {Workload::W1, "W1", "points", "points", "shapelib", 8.0},
    {Workload::W2, "W2", "polygons", "polygons", "shapelib", 2.5},
    {Workload::W3, "W3", "dBase read", nullptr, "shapelib", 5.0},
    {Workload::W4, "W4", "CSV read", nullptr, "gdal", 8.0},
};

const WorkloadInfo& Info(Workload e) {
    return kWorkloads[static_cast<int>(e)];
}

std::optional<Workload> ParseWorkload(std::string_view s) {
    for (const WorkloadInfo& t : kWorkloads) {
        if (s == t.sId || (s.size() == 2 && s[0] == 'w' && s[1] == t.sId[1])) return t.eWorkload;
    }
    return std::nullopt;
}

std::vector<std::string> Split(const std::string& s) {
    std::vector<std::string> v;
    std::stringstream ss(s);
    for (std::string sItem; std::getline(ss, sItem, ',');) {
        if (!sItem.empty()) v.push_back(sItem);
    }
    return v;
}

std::string ExecutablePath() {
    return fs::read_symlink("/proc/self/exe").string();
}

std::string ModulePath(const std::string& sName) {
    return (fs::path(ExecutablePath()).parent_path() / ("tnw_bench_" + sName + ".so")).string();
}

bool IsAvailable(const std::string& sName) {
    return sName == kLibrary || fs::exists(ModulePath(sName));
}

double CpuSeconds() {
    struct rusage t {};
    getrusage(RUSAGE_SELF, &t);
    return static_cast<double>(t.ru_utime.tv_sec + t.ru_stime.tv_sec) +
           static_cast<double>(t.ru_utime.tv_usec + t.ru_stime.tv_usec) / 1e6;
}

long CurrentRssKiB() {
    std::ifstream f("/proc/self/status");
    for (std::string sLine; std::getline(f, sLine);) {
        if (sLine.rfind("VmRSS:", 0) == 0) return std::strtol(sLine.c_str() + 6, nullptr, 10);
    }
    return 0;
}

// ---- Child: one implementation, one workload, several timed runs ----------------------

const Implementation* LoadImplementation(const std::string& sName) {
    if (sName == kLibrary) return LibraryImplementation();
    void* hModule = dlopen(ModulePath(sName).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (!hModule) throw std::runtime_error(dlerror());
    auto fnGet =
        reinterpret_cast<const Implementation* (*)()>(dlsym(hModule, "tnw_bench_implementation"));
    if (!fnGet) throw std::runtime_error(sName + ": no tnw_bench_implementation");
    return fnGet();
}

void RemoveSet(const std::string& sBase) {
    for (const char* sExtension : {".shp", ".shx", ".dbf", ".prj", ".cpg", ".mcd"}) {
        fs::remove(sBase + sExtension);
    }
}

// Prints "rss-start <KiB>", a "run <wall seconds> <CPU seconds>" line for each run and
// "result <records>
// <checksum>"; "unsupported" when the implementation lacks the workload.
int RunChild(Workload eWorkload, const std::string& sName, std::int64_t n, int nRuns,
             const std::string& sOutput, const std::string& sInput) {
    const Implementation* pImpl = LoadImplementation(sName);
    WorkloadFunction fnRun = pImpl->afnRun[static_cast<int>(eWorkload)];
    if (!fnRun) {
        std::printf("unsupported\n");
        return 0;
    }
    WorkloadArgs tArgs{eWorkload, RecordCount(eWorkload, n), sOutput, sInput};
    bool bWrites = Info(eWorkload).sSetName != nullptr;
    if (bWrites) fs::create_directories(fs::path(sOutput).parent_path());

    std::printf("rss-start %ld\n", CurrentRssKiB());
    WorkloadResult tResult;
    for (int iRun = 0; iRun < nRuns; ++iRun) {
        if (bWrites) {
            RemoveSet(sOutput);
            sync();  // earlier runs' dirty pages must not be written back during this one
        }
        double dCpuStart = CpuSeconds();
        auto tStart = std::chrono::steady_clock::now();
        tResult = fnRun(tArgs);
        std::chrono::duration<double> dElapsed = std::chrono::steady_clock::now() - tStart;
        std::printf("run %.6f %.6f\n", dElapsed.count(), CpuSeconds() - dCpuStart);
        std::fflush(stdout);
    }
    std::printf("result %lld %s\n", static_cast<long long>(tResult.lRecords),
                tResult.sChecksum.empty() ? "-" : tResult.sChecksum.c_str());
    return 0;
}

// ---- Parent ------------------------------------------------------------------------

// Runs a program with its standard output captured; gives its exit status (-1 when it did not
// exit normally) and, in ptUsage, its resource use.
int RunProcess(const std::vector<std::string>& vArgs, std::string& sOutput,
               struct rusage* ptUsage = nullptr) {
    int aPipe[2];
    if (pipe(aPipe) != 0) throw std::runtime_error("pipe failed");
    std::vector<char*> vArgv;
    for (const std::string& s : vArgs)
        vArgv.push_back(const_cast<char*>(s.c_str()));
    vArgv.push_back(nullptr);
    std::fflush(nullptr);
    pid_t pid = fork();
    if (pid < 0) throw std::runtime_error("fork failed");
    if (pid == 0) {
        dup2(aPipe[1], STDOUT_FILENO);
        close(aPipe[0]);
        close(aPipe[1]);
        execv(vArgv[0], vArgv.data());
        _exit(127);
    }
    close(aPipe[1]);
    char aBuffer[4096];
    for (ssize_t n; (n = read(aPipe[0], aBuffer, sizeof aBuffer)) != 0;) {
        if (n > 0) sOutput.append(aBuffer, static_cast<std::size_t>(n));
    }
    close(aPipe[0]);
    int iStatus = 0;
    struct rusage tUsage {};
    wait4(pid, &iStatus, 0, &tUsage);
    if (ptUsage) *ptUsage = tUsage;
    return WIFEXITED(iStatus) ? WEXITSTATUS(iStatus) : -1;
}

struct Options {
    std::int64_t n = 1000000;
    int nRuns = 5;
    std::vector<Workload> vWorkloads;
    std::vector<std::string> vImplementations;
    std::string sFolder = "bench-data";
    bool bCheckSets = true;
};

struct Measurement {
    std::string sName;
    std::vector<double> vWall, vCpu;  // seconds of each run
    double dWall = 0.0, dCpu = 0.0;   // their medians
    long lRssStartKiB = 0;
    long lRssPeakKiB = 0;
    std::int64_t lRecords = 0;
    std::string sChecksum;
};

double Median(std::vector<double> v) {
    std::sort(v.begin(), v.end());
    return v.size() % 2 ? v[v.size() / 2] : (v[v.size() / 2 - 1] + v[v.size() / 2]) / 2;
}

std::string SetBase(const Options& tOptions, const WorkloadInfo& tInfo, const std::string& sName) {
    return tOptions.sFolder + "/" + tInfo.sId + "/" + sName + "/" + tInfo.sSetName;
}

std::optional<Measurement> Measure(const Options& tOptions, const WorkloadInfo& tInfo,
                                   const std::string& sName, const std::string& sInput,
                                   std::vector<std::string>& vFailures) {
    std::string sOutput = tInfo.sSetName ? SetBase(tOptions, tInfo, sName) : "-";
    std::string sText;
    struct rusage tUsage {};
    // Through /proc/self/exe, so that a rebuild during a run cannot mix two builds.
    int iStatus = RunProcess({"/proc/self/exe", "--child", tInfo.sId, sName, "-n",
                              std::to_string(tOptions.n), "-r", std::to_string(tOptions.nRuns),
                              "--output", sOutput, "--input", sInput.empty() ? "-" : sInput},
                             sText, &tUsage);
    Measurement t;
    t.sName = sName;
    t.lRssPeakKiB = tUsage.ru_maxrss;
    bool bResult = false;
    std::istringstream in(sText);
    for (std::string sLine; std::getline(in, sLine);) {
        std::istringstream line(sLine);
        std::string sKey;
        line >> sKey;
        if (sKey == "unsupported") return std::nullopt;
        if (sKey == "rss-start") line >> t.lRssStartKiB;
        if (sKey == "run") {
            double dWall = 0, dCpu = 0;
            line >> dWall >> dCpu;
            t.vWall.push_back(dWall);
            t.vCpu.push_back(dCpu);
        }
        if (sKey == "result") {
            line >> t.lRecords >> std::ws;
            std::getline(line, t.sChecksum);
            bResult = true;
        }
    }
    if (iStatus != 0 || !bResult || t.vWall.empty()) {
        vFailures.push_back(sName + " failed (exit status " + std::to_string(iStatus) + ")");
        return std::nullopt;
    }
    t.dWall = Median(t.vWall);
    t.dCpu = Median(t.vCpu);
    return t;
}

// check-shapeset on one written set. The rivals write T/F logicals, which the checker holds
// to the library's Y/N rule, and no .mcd: they are checked without sidecars, and a failure
// of dbf-logical alone is what they are expected to show.
void CheckShapeSet(const std::string& sBase, bool bRival, std::vector<std::string>& vFailures,
                   std::vector<std::string>& vNotes) {
    std::vector<std::string> vArgs = {TNW_CHECK_SHAPESET, "--quiet", "--limit", "3"};
    if (bRival) vArgs.push_back("--no-sidecars");
    vArgs.push_back(sBase);
    std::string sOutput;
    int iStatus = RunProcess(vArgs, sOutput);
    // Check ids stand in brackets: "[dbf-logical]".
    std::set<std::string> setIds;
    for (std::size_t nOpen = sOutput.find('['); nOpen != std::string::npos;
         nOpen = sOutput.find('[', nOpen + 1)) {
        std::size_t nClose = sOutput.find(']', nOpen);
        if (nClose == std::string::npos) break;
        std::string sId = sOutput.substr(nOpen + 1, nClose - nOpen - 1);
        bool bId = !sId.empty() && sId.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-") ==
                                       std::string::npos;
        if (bId) setIds.insert(sId);
    }
    bool bExpected =
        iStatus == 0 || (bRival && iStatus == 1 && setIds == std::set<std::string>{"dbf-logical"});
    if (!bExpected) {
        vFailures.push_back("check-shapeset " + sBase + " (exit " + std::to_string(iStatus) +
                            "):\n" + sOutput);
    } else if (iStatus != 0) {
        vNotes.push_back(sBase + ": only dbf-logical differs (T/F logicals, as expected)");
    }
}

void ValidateSets(const Options& tOptions, const WorkloadInfo& tInfo,
                  const std::vector<Measurement>& vResults, std::vector<std::string>& vFailures,
                  std::vector<std::string>& vNotes) {
    std::int64_t lExpected = RecordCount(tInfo.eWorkload, tOptions.n);
    Checksum tTable =
        tInfo.eWorkload == Workload::W1 ? ExpectedW1Table(lExpected) : ExpectedW2Table(lExpected);
    for (const Measurement& t : vResults) {
        std::string sBase = SetBase(tOptions, tInfo, t.sName);
        if (t.lRecords != lExpected) {
            vFailures.push_back(t.sName + " wrote " + std::to_string(t.lRecords) + " records of " +
                                std::to_string(lExpected));
        }
        try {
            std::string sTable = TableChecksum(sBase + ".dbf").Text();
            if (sTable != tTable.Text()) {
                vFailures.push_back(t.sName + " .dbf holds " + sTable + ", expected " +
                                    tTable.Text());
            }
        } catch (const std::exception& e) {
            vFailures.push_back(t.sName + " .dbf: " + e.what());
        }
        if (tOptions.bCheckSets) CheckShapeSet(sBase, t.sName != kLibrary, vFailures, vNotes);
        if (&t != &vResults.front()) {
            std::string sFirst = SetBase(tOptions, tInfo, vResults.front().sName);
            for (const char* sExtension : {".shp", ".shx"}) {
                std::string sDiff = CompareFiles(sFirst + sExtension, sBase + sExtension);
                if (!sDiff.empty()) {
                    vFailures.push_back(t.sName + sExtension + " and " + vResults.front().sName +
                                        sExtension + " " + sDiff);
                }
            }
        }
    }
    if (vResults.size() > 1)
        vNotes.push_back(".shp and .shx compared byte for byte across implementations");
    vNotes.push_back(".dbf contents equal the workload's values: " + tTable.Text());
}

void ValidateReads(const std::vector<Measurement>& vResults, const Checksum& tExpected,
                   std::vector<std::string>& vFailures, std::vector<std::string>& vNotes) {
    for (const Measurement& t : vResults) {
        if (t.sChecksum != tExpected.Text()) {
            vFailures.push_back(t.sName + " checksum " + t.sChecksum + ", expected " +
                                tExpected.Text());
        }
    }
    vNotes.push_back("every checksum " + tExpected.Text());
}

std::string Grouped(std::int64_t l) {
    std::string s = std::to_string(l);
    for (int i = static_cast<int>(s.size()) - 3; i > 0; i -= 3)
        s.insert(static_cast<std::size_t>(i), ",");
    return s;
}

// Wall time is what the targets are set in; CPU time (user and system) is shown beside it
// because on a shared machine the wall time of a run also holds the time others took.
void PrintTable(const Options& tOptions, const WorkloadInfo& tInfo,
                const std::vector<Measurement>& vResults) {
    std::int64_t lRecords = RecordCount(tInfo.eWorkload, tOptions.n);
    std::printf("\n%s %s: %s records, median of %d runs\n", tInfo.sId, tInfo.sTitle,
                Grouped(lRecords).c_str(), tOptions.nRuns);
    std::printf("  %-9s %8s %8s %11s %10s %10s %13s\n", "", "wall s", "cpu s", "records/s",
                "RSS start", "RSS peak", "x library");
    const Measurement* pLibrary = nullptr;
    for (const Measurement& t : vResults) {
        if (t.sName == kLibrary) pLibrary = &t;
    }
    for (const Measurement& t : vResults) {
        char sRatio[64] = "";
        if (pLibrary) {
            std::snprintf(sRatio, sizeof sRatio, "%.2f (%.2f)", t.dWall / pLibrary->dWall,
                          t.dCpu / pLibrary->dCpu);
        }
        std::printf("  %-9s %8.3f %8.3f %9.2f M %6.1f MiB %6.1f MiB %13s\n", t.sName.c_str(),
                    t.dWall, t.dCpu, static_cast<double>(lRecords) / t.dWall / 1e6,
                    t.lRssStartKiB / 1024.0, t.lRssPeakKiB / 1024.0, sRatio);
    }
    if (!pLibrary) return;
    for (const Measurement& t : vResults) {
        if (t.sName != tInfo.sRival) continue;
        double dRatio = t.dWall / pLibrary->dWall;
        std::printf("  target  %s / library >= %.1f: %.2f (cpu %.2f), %s\n", tInfo.sRival,
                    tInfo.dTarget, dRatio, t.dCpu / pLibrary->dCpu,
                    dRatio >= tInfo.dTarget ? "met" : "missed");
    }
    for (const Measurement& t : vResults) {
        if (t.sName != kYardstick) continue;
        const double dRatio = pLibrary->dCpu / t.dCpu;
        std::printf("  target  library / %s cpu <= %.1f: %.2f, %s\n", kYardstick, kYardstickTarget,
                    dRatio, dRatio <= kYardstickTarget ? "met" : "missed");
    }
    double dPeak = pLibrary->lRssPeakKiB / 1024.0;
    std::printf("  target  library peak RSS < %.0f MiB: %.1f MiB, %s\n", kMemoryTargetMiB, dPeak,
                dPeak < kMemoryTargetMiB ? "met" : "missed");
}

bool RunWorkload(const Options& tOptions, const WorkloadInfo& tInfo) {
    std::vector<std::string> vFailures, vNotes;
    std::string sInput;
    Checksum tExpected;
    if (tInfo.eWorkload == Workload::W3) {
        sInput = PrepareW3Input(tOptions.sFolder + "/inputs", tOptions.n);
        tExpected = ExpectedW1Table(tOptions.n);
    } else if (tInfo.eWorkload == Workload::W4) {
        CsvInput tCsv = PrepareW4Input(tOptions.sFolder + "/inputs", tOptions.n);
        sInput = tCsv.sPath;
        tExpected = tCsv.tExpected;
    }
    if (!sInput.empty()) WarmPageCache(sInput);

    std::vector<Measurement> vResults;
    for (const std::string& sName : tOptions.vImplementations) {
        std::fprintf(stderr, "%s %s ...\n", tInfo.sId, sName.c_str());
        if (auto t = Measure(tOptions, tInfo, sName, sInput, vFailures)) vResults.push_back(*t);
    }
    if (tInfo.sSetName) {
        ValidateSets(tOptions, tInfo, vResults, vFailures, vNotes);
    } else {
        ValidateReads(vResults, tExpected, vFailures, vNotes);
    }
    PrintTable(tOptions, tInfo, vResults);
    for (const std::string& s : vNotes)
        std::printf("  checked %s\n", s.c_str());
    for (const std::string& s : vFailures)
        std::printf("  FAILED  %s\n", s.c_str());
    return vFailures.empty();
}

[[noreturn]] void Usage(const char* sProgram, int iStatus) {
    std::fprintf(
        iStatus ? stderr : stdout,
        "usage: %s [-n N] [-r RUNS] [-w W1,W2,W3,W4] [-i library,shapelib,gdal,hand] [-d FOLDER]\n"
        "          [--no-check-sets]\n"
        "  -n N       records of W1, W3 and W4; W2 writes N / 10 (default 1000000, or\n"
        "             $TNW_BENCH_N)\n"
        "  -r RUNS    timed runs per implementation; the table shows the median (default 5,\n"
        "             or $TNW_BENCH_RUNS)\n"
        "  -w LIST    workloads to run (default all)\n"
        "  -i LIST    implementations (default all that were built)\n"
        "  -d FOLDER  inputs and written sets (default ./bench-data, or $TNW_BENCH_DIR)\n"
        "  --no-check-sets  skip check-shapeset on the written sets\n"
        "Exit status 1 when the implementations did not do the same work.\n",
        sProgram);
    std::exit(iStatus);
}

}  // namespace

int main(int argc, char** argv) {
    try {
        Options tOptions;
        if (const char* s = std::getenv("TNW_BENCH_N")) tOptions.n = std::atoll(s);
        if (const char* s = std::getenv("TNW_BENCH_RUNS")) tOptions.nRuns = std::atoi(s);
        if (const char* s = std::getenv("TNW_BENCH_DIR")) tOptions.sFolder = s;
        std::optional<Workload> oChild;
        std::string sChildName, sOutput, sInput;
        std::string sWorkloads = "W1,W2,W3,W4";
        std::string sImplementations;
        for (int i = 1; i < argc; ++i) {
            std::string sArg = argv[i];
            auto next = [&]() -> std::string {
                if (i + 1 >= argc) Usage(argv[0], 2);
                return argv[++i];
            };
            if (sArg == "-n") {
                tOptions.n = std::atoll(next().c_str());
            } else if (sArg == "-r") {
                tOptions.nRuns = std::atoi(next().c_str());
            } else if (sArg == "-w") {
                sWorkloads = next();
            } else if (sArg == "-i") {
                sImplementations = next();
            } else if (sArg == "-d") {
                tOptions.sFolder = next();
            } else if (sArg == "--no-check-sets") {
                tOptions.bCheckSets = false;
            } else if (sArg == "--child") {
                oChild = ParseWorkload(next());
                sChildName = next();
                if (!oChild) Usage(argv[0], 2);
            } else if (sArg == "--output") {
                sOutput = next();
            } else if (sArg == "--input") {
                sInput = next();
            } else if (sArg == "-h" || sArg == "--help") {
                Usage(argv[0], 0);
            } else {
                Usage(argv[0], 2);
            }
        }
        if (tOptions.n < 1 || tOptions.nRuns < 1) Usage(argv[0], 2);
        if (oChild)
            return RunChild(*oChild, sChildName, tOptions.n, tOptions.nRuns, sOutput, sInput);

        for (const std::string& s : Split(sWorkloads)) {
            auto e = ParseWorkload(s);
            if (!e) Usage(argv[0], 2);
            tOptions.vWorkloads.push_back(*e);
        }
        if (sImplementations.empty()) {
            tOptions.vImplementations.push_back(kLibrary);
            for (const char* s : kRivals) {
                if (IsAvailable(s)) tOptions.vImplementations.push_back(s);
            }
        } else {
            for (const std::string& s : Split(sImplementations)) {
                if (!IsAvailable(s)) {
                    std::fprintf(stderr, "%s: implementation %s was not built\n", argv[0],
                                 s.c_str());
                    return 2;
                }
                tOptions.vImplementations.push_back(s);
            }
        }
        fs::create_directories(tOptions.sFolder);
        tOptions.sFolder = fs::canonical(tOptions.sFolder).string();

        bool bAgree = true;
        for (Workload e : tOptions.vWorkloads)
            bAgree = RunWorkload(tOptions, Info(e)) && bAgree;
        std::printf("\n%s\n", bAgree ? "All implementations did the same work."
                                     : "FAILED: the implementations did not do the same work.");
        return bAgree ? 0 : 1;
    } catch (const std::exception& e) {
        std::printf("error %s\n", e.what());
        std::fprintf(stderr, "%s: %s\n", argv[0], e.what());
        return 1;
    }
}

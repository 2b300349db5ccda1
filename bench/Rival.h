// The interface of a rival implementation. Each rival is a module of its own, loaded only by
// the child process that times it, so that no other implementation's libraries count towards
// its memory (GDAL alone maps some 30 MiB of libraries).
#pragma once

#include "Workloads.h"

namespace tnw::bench {

// Runs one workload once; throws std::exception on failure.
using WorkloadFunction = WorkloadResult (*)(const WorkloadArgs& tArgs);

struct Implementation {
    const char* sName;
    // By workload, W1 to W4; nullptr where the implementation has no such driver.
    WorkloadFunction afnRun[4];
};

}  // namespace tnw::bench

// Each rival module exports this one symbol.
extern "C" const tnw::bench::Implementation* tnw_bench_implementation();

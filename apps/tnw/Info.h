// "tnw info": what a file holds, on stdout.
#pragma once

#include "Console.h"
#include "ExitCodes.h"
#include "Input.h"

namespace tnw::cli {

ExitCode Info(const InputOptions& tInput, Console& oConsole);

// What info prints of each kind, for the kinds' rows.
void TextInfo(const InputOptions& tOptions, Console& oConsole);
void TableInfo(const InputOptions& tOptions, Console& oConsole);
void ShapesInfo(const InputOptions& tOptions, Console& oConsole);
void FGPInfo(const InputOptions& tOptions, Console& oConsole);
// The totals of a plan-grid file's header.
void PlanInfo(const InputOptions& tOptions, Console& oConsole);
// The records of a GPL log, its start and stop rows and its companion table.
void LogInfo(const InputOptions& tOptions, Console& oConsole);

}  // namespace tnw::cli

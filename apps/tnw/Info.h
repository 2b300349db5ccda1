// "tnw info": what a file holds, on stdout.
#pragma once

#include "Console.h"
#include "ExitCodes.h"
#include "Input.h"

namespace tnw::cli {

ExitCode Info(const InputOptions& tInput, Console& oConsole);

}  // namespace tnw::cli

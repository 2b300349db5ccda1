// "tnw summary": a field-operation summary built from yield logs, one region per log, written
// through the summary export of the output's kind.
#pragma once

#include <string>
#include <vector>

#include "Console.h"
#include "Convert.h"
#include "ExitCodes.h"
#include "Input.h"

namespace tnw::cli {

// Each of vInputs is read with tInput's options (its sPath aside).
ExitCode Summary(const std::vector<std::string>& vInputs, const InputOptions& tInput,
                 const OutputOptions& tOutput, Console& oConsole);

}  // namespace tnw::cli

// "tnw preview": an SVG map of a file's records, coloured by a column.
#pragma once

#include <cstdint>
#include <string>

#include "Console.h"
#include "ExitCodes.h"
#include "Input.h"

namespace tnw::cli {

struct PreviewOptions {
    std::string sPath;    // the .svg to write
    std::string sColumn;  // "" for one colour
    std::int32_t lWidth = 900;
};

ExitCode Preview(const InputOptions& tInput, const PreviewOptions& tOptions, Console& oConsole);

}  // namespace tnw::cli

// "tnw convert": reads records from one file and writes them to another through the
// library's encoders.
#pragma once

#include <optional>
#include <string>

#include "Console.h"
#include "ExitCodes.h"
#include "Input.h"

namespace tnw::cli {

struct OutputOptions {
    std::string sPath;
    std::string sTo;         // a kind name overriding the extension
    std::string sDelimiter;  // --delimiter: the output's when it is text, else the input's
    bool bIncludeInvisible = false;
    // Shapefile sets.
    std::string sGeometry;  // point, line, region, multipoint, none; "" for the input's kind
    std::optional<double> dXOffset;
    std::optional<double> dYOffset;
    bool bCentroids = false;
    std::string sProjection;  // "" for none
    // Delimited text.
    bool bNoHeader = false;
    std::optional<bool> bGeometryText;  // unset: on when the input's geometry is WKT
    std::optional<bool> bLonLat;        // unset: on when the input's geometry is a lon/lat pair
    // Plan-grid files.
    std::string sRate;  // the column of the application rate
};

ExitCode Convert(InputOptions tInput, OutputOptions tOutput, Console& oConsole);

}  // namespace tnw::cli

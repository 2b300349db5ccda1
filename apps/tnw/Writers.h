// Writing records to a file kind: the one interface convert drives, and the writers of the
// library's encoders behind it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "core/GISLib.h"
#include "core/Geometry.h"

namespace tnw {
class VELDSummary;
}

namespace tnw::cli {

class Console;
struct Input;
struct OutputOptions;

class RecordWriter {
public:
    virtual ~RecordWriter() = default;

    // Makes the output for the input's columns. Failure kExitUsage for options that don't fit
    // the input, kExitOutput when the output can't be created.
    virtual void Open(const OutputOptions& tOptions, Input& tInput, Console& oConsole) = 0;
    // Writes the input's current record (its columns hold the values) with this geometry;
    // false when the encoder refused it.
    virtual bool Write(const std::shared_ptr<IGeometry>& oGeometry) = 0;
    // Finishes the output; lWritten records were accepted. Failure kExitOutput when it could
    // not be finished.
    virtual void Close(std::int64_t lWritten) = 0;

    // The files the output consists of, as they stand on disk after Close.
    virtual std::vector<std::filesystem::path> Files() const = 0;
    // The files that writing to sOutput makes or replaces.
    virtual std::vector<std::filesystem::path> Targets(const std::string& sOutput) const = 0;
    // What the summary line adds about the output, such as ", points"; "" for nothing.
    virtual std::string Detail() const { return {}; }

    // Writes a field-operation summary to tOptions.sPath instead of records. Failure kExitKind
    // for a kind that holds no summary (all but a shapefile set), kExitOutput when it could not
    // be written.
    virtual void WriteSummary(const OutputOptions& tOptions, std::shared_ptr<VELDSummary> oSummary,
                              Console& oConsole);
};

// Refuses an output that would replace an input file (kExitUsage).
void CheckNotInput(const std::string& sInput, const RecordWriter& oWriter,
                   const std::string& sOutput);
// Makes the output's folder when it is missing (kExitOutput when it can't).
void MakeFolder(const std::string& sOutput);
// "out.shp .shx .dbf .prj .mcd (1.0 MiB, points)": the files written and their size.
std::string OutputText(const std::vector<std::filesystem::path>& vFiles,
                       const std::string& sDetail);
// The columns of a dBase table for the input's: a number field wide enough for its number
// text, a text field at most 254 bytes wide.
std::shared_ptr<tnwColumns> TableColumns(const tnwColumns& oInput);

std::unique_ptr<RecordWriter> NewTextWriter();
std::unique_ptr<RecordWriter> NewTableWriter();
std::unique_ptr<RecordWriter> NewShapeSetWriter();
std::unique_ptr<RecordWriter> NewPlanWriter();
std::unique_ptr<RecordWriter> NewLogWriter();

}  // namespace tnw::cli

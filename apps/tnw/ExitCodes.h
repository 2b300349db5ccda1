// The tool's exit codes, and the one failure type that carries one up to main.
#pragma once

#include <stdexcept>
#include <string>

namespace tnw::cli {

enum ExitCode : int {
    kExitOk = 0,
    kExitRecordsFailed = 1,  // finished, but some records could not be read or written
    kExitUsage = 2,          // a bad option or argument
    kExitInput = 3,          // an input file is missing or can't be read
    kExitKind = 4,           // a file kind the tool doesn't know, or can't convert to
    kExitOutput = 5,         // the output is unfinished: not created, or not written whole
    kExitInternal = 6,       // any other failure
};

// Text for --help.
inline constexpr const char* kExitCodeHelp =
    "Exit codes:\n"
    "  0  done\n"
    "  1  done, but some records could not be read or written (see the messages)\n"
    "  2  bad option or argument\n"
    "  3  an input file is missing or can't be read\n"
    "  4  unknown file kind, or a conversion the tool can't make\n"
    "  5  the output is unfinished: it could not be created or written whole, and no\n"
    "     file under its name was changed\n"
    "  6  any other failure";

// A failure the tool explains in one sentence (without the "tnw: " in front or the full stop).
class Failure : public std::runtime_error {
public:
    Failure(ExitCode eCode, const std::string& sSentence)
        : std::runtime_error(sSentence), m_eCode(eCode) {}
    ExitCode Code() const { return m_eCode; }

private:
    ExitCode m_eCode;
};

}  // namespace tnw::cli

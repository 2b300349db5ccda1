// The stand-in shared file utility.
//
// Paths: "/" and "\" both separate folders in every path given, and files are reached with
// "\" read as "/". Folder gives the folder with "/" separators and no trailing one: "." for a
// bare file name, "" for a file in the root. Extension and BaseName split the last name at its
// last ".": "a/b.tar.gz" has the extension "gz" and the base name "b.tar"; a name with no "."
// has no extension.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "core/GISLib.h"

namespace tnw::standins {

class FileUtility final : public tnwFileUtility {
public:
    // True for an existing regular file.
    bool FileExists(std::string_view sPath) const override;
    // Bytes; error 53 when there is no such file.
    std::int64_t FileLength(std::string_view sPath) const override;
    // The last modification, local time; error 53 when there is no such file.
    SerialDate FileDate(std::string_view sPath) const override;
    std::string Extension(std::string_view sPath) const override;
    std::string BaseName(std::string_view sPath) const override;
    std::string Folder(std::string_view sPath) const override;
    // Writes the bytes as given, replacing the file; errors 53 (no such folder), 75 (access).
    void SaveTextFile(std::string_view sText, std::string_view sPath) const override;
};

}  // namespace tnw::standins

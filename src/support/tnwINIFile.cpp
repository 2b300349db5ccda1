#include "support/tnwINIFile.h"

#include "core/GISLib.h"
#include "platform/CodePage.h"
#include "platform/File.h"

namespace tnw {

std::shared_ptr<tnwINIValue> tnwINISection::Create(const std::string& sKeyIn,
                                                   const std::string& sValue) {
    std::shared_ptr<tnwINIValue> oValue(new tnwINIValue(sKeyIn));
    oValue->SetValue(sValue);
    return oValues.Add(oValue) ? oValue : nullptr;
}

std::shared_ptr<tnwINISection> tnwINIFile::Create(const std::string& sKey) {
    std::shared_ptr<tnwINISection> oSection(new tnwINISection(sKey));
    return oSections.Add(oSection) ? oSection : nullptr;
}

TNW_Encoders_OpenModes tnwINIFile::OpenINI(const std::string& sFilenameIn,
                                           TNW_Encoders_OpenModes eMode) {
    sFilename = sFilenameIn;
    oSections.Drop();
    if (eMode & TNW_OpenMode_Open) {
        if (FileUtility()->FileExists(sFilename)) {
            oSections.Clear();
            ReadFile();
        } else if (eMode & TNW_OpenMode_Create) {
            oSections.Clear();
        }
    } else if (eMode == TNW_OpenMode_Create) {
        oSections.Clear();
    }
    return TNW_Encoders_OpenModes{};
}

// With LoadContent: "[name]" starts a section; "key=value" inside a section adds a value,
// split at the first "=" with nothing trimmed, as Save writes it; blank lines, lines that begin
// with ";", lines before the first section and lines with no "=" are passed over. A key that
// the list has already keeps its first entry.
void tnwINIFile::ReadFile() {
    platform::InputFile oFile;
    oFile.Open(sFilename);
    std::string sLine;
    std::size_t nConsumed = 0;
    std::shared_ptr<tnwINISection> oSection;
    while (oFile.ReadLine(sLine, platform::LineEnds::Any, nConsumed)) {
        if (!bLoadContent) continue;
        const std::string sText = platform::FromNarrow(sLine);
        if (sText.size() >= 2 && sText.front() == '[' && sText.back() == ']') {
            const std::string sKey = sText.substr(1, sText.size() - 2);
            oSection = Create(sKey);
            if (!oSection) oSection = Item(sKey);
            continue;
        }
        const std::size_t nEquals = sText.find('=');
        if (!oSection || sText.starts_with(';') || nEquals == std::string::npos) continue;
        oSection->Create(sText.substr(0, nEquals), sText.substr(nEquals + 1));
    }
}

bool tnwINIFile::Save(const std::string& sFilenameOut) {
    const std::string& sName = sFilenameOut.empty() ? sFilename : sFilenameOut;
    std::string sText;
    for (const auto& oSection : NewEnum()) {
        sText += "\r\n[";
        platform::AppendNarrow(sText, oSection->Key());
        sText += "]\r\n";
        for (const auto& oValue : oSection->NewEnum()) {
            platform::AppendNarrow(sText, oValue->Key());
            sText += '=';
            platform::AppendNarrow(sText, oValue->value());
            sText += "\r\n";
        }
    }
    platform::OutputFile oFile;
    oFile.Open(sName);
    oFile.Write(sText);
    oFile.Close();
    return false;
}

}  // namespace tnw

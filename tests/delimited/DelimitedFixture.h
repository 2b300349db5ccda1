// Shared setup of the delimited reader's tests: captured error reports, the unit lookup, a
// temporary folder and a reader made after the stand-ins are registered.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "delimited/tnwASCIIDecoder.h"
#include "support/TestSupport.h"
#include "uom/UnitLookup.h"

namespace tnw::test {

class DelimitedTest : public ::testing::Test {
protected:
    DelimitedTest() {
        standins::RegisterUnitLookup();
        oReader = std::make_unique<tnwASCIIDecoder>();
    }

    // Writes sBytes to a file of the temporary folder and gives its path.
    std::string Write(const std::string& sName, const std::string& sBytes) {
        const std::string sPath = oDir.Path(sName);
        WriteFile(sPath, sBytes);
        return sPath;
    }

    // Points the reader at a new file holding sBytes.
    void Open(const std::string& sBytes) { oReader->SetFilename(Write("data.csv", sBytes)); }

    static std::vector<std::string> Fields(const FieldArray& aFields) {
        std::vector<std::string> vFields;
        for (std::int32_t i = 0; i <= aFields.UBound(); ++i)
            vFields.push_back(aFields.Item(i));
        return vFields;
    }

    std::shared_ptr<tnwColumn> AddColumn(const std::string& sKey, std::int32_t lType,
                                         std::int16_t iSize, std::int16_t iPrecision = 0) {
        return oReader->Columns()->Add(sKey, "", "", lType, iSize, iPrecision, 0, 1, 16, "", true,
                                       true);
    }

    ScopedCapture oCapture;
    TempDir oDir;
    std::unique_ptr<tnwASCIIDecoder> oReader;
};

}  // namespace tnw::test

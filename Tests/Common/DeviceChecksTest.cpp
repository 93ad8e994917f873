#include "Common/Utilities/DeviceChecks.h"
#include "Tests/Support/DerivedPPD.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

namespace orvan {
namespace {

PPDRecord opened(const DerivedPPD& ppd) {
    return PPDRecord(ppdOpenFile(ppd.file().c_str()));
}

TEST(DeviceChecks, ReadsTheModelNumberFromTheFirstDigits) {
    const std::pair<const char*, const char*> cases[] = {
        {"Orvan 4500", "4500"},
        {"Model 0450N", "450"},
        {"12-34", "12"},
        {"Orvan", "0"},
        {"000", "0"},
        {"", "0"},
        {"\xC3\x9C"
         "ber 45 \xE2\x82\xAC 9",
            "45"},
        {"Orvan 4500\xFC", "0000"},
        {"Orvan 123456789012345678901234567890", "123456789012345678901234567890"},
    };
    for (const auto& [modelName, number] : cases) {
        DerivedPPD ppd;
        ppd.replace("*ModelName: \"Orvan 4500\"", "*ModelName: \"" + std::string(modelName) + "\"");
        const PPDRecord record = opened(ppd);
        ASSERT_NE(record, nullptr) << modelName;
        EXPECT_EQ(getDeviceModelNumber(record.get()), number) << modelName;
    }
    DerivedPPD unnamed;
    unnamed.replace("*ModelName: \"Orvan 4500\"\n", "");
    EXPECT_EQ(getDeviceModelNumber(opened(unnamed).get()), "0000");
    EXPECT_EQ(getDeviceModelNumber(nullptr), "0000");
}

TEST(DeviceChecks, KnowsTheFamily) {
    constexpr const char* kSmoothing =
        "*OpenUI *OVNImageSmoothing/Smoothing: Boolean\n*OVNImageSmoothing True/On: \"\"\n"
        "*CloseUI: *OVNImageSmoothing\n";
    const struct {
        const char* manufacturer;
        bool raster;
        bool smoothing;
        std::int32_t status;
    } cases[] = {
        {"*Manufacturer: \"Orvan\"\n", true, false, 0},
        {"*Manufacturer: \"Orvan\"\n", false, true, 0},
        {"*Manufacturer: \"Orvan\"\n", false, false, -9530},
        {"*Manufacturer: \"orvan\"\n", true, true, -9530},
        {"*Manufacturer: \"Orvan Inc\"\n", true, false, -9530},
        {"", true, false, -9530},
    };
    for (const auto& [manufacturer, raster, smoothing, status] : cases) {
        DerivedPPD ppd;
        ppd.replace("*Manufacturer: \"Orvan\"\n", manufacturer).append(smoothing ? kSmoothing : "");
        if (!raster) ppd.removeOptions({"OVNHasOVRaster"});
        const PPDRecord record = opened(ppd);
        ASSERT_NE(record, nullptr);
        EXPECT_EQ(MyCheckPDEContextCUPS(record.get()), status) << manufacturer << raster << smoothing;
    }
    EXPECT_EQ(MyCheckPDEContextCUPS(nullptr), -9530);
}

} // namespace
} // namespace orvan

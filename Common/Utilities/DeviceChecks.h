// What a printer's PPD says about the printer: its model number, and whether it is one of ours.
#pragma once

#include <cups/ppd.h>

#include <cstdint>
#include <string>

namespace orvan {

inline constexpr std::int32_t kPDEContextValid = 0;
// The print system's status for an extension context that is not valid.
inline constexpr std::int32_t kPDEContextNotValid = -9530;

// The first run of decimal digits in the PPD's "ModelName", without leading zeros ("Model 0450N" gives
// "450"); "0" when it has no digit, and "0000" when it is missing or not UTF-8. A run of any length is
// answered whole.
std::string getDeviceModelNumber(ppd_file_t* ppd);

// kPDEContextValid when the PPD belongs to a printer of this family (it has the option OVNImageSmoothing or
// OVNHasOVRaster, and its manufacturer is exactly "Orvan"), otherwise kPDEContextNotValid. A null record has
// no options.
std::int32_t MyCheckPDEContextCUPS(ppd_file_t* ppd);

} // namespace orvan

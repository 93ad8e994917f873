// The commands that the command filter answers, and what of the ticket answers each.
#pragma once

#include "Common/TicketVocabulary.h"

#include <strings.h>

#include <algorithm>
#include <array>
#include <string>
#include <string_view>

namespace orvan {

struct CommandSpec {
    enum class Source {
        document,   // the status document; answered in chunks
        accounting, // the SNMP agent; answered in chunks
        levels,     // the status document; told to the scheduler
    };

    const char* name;
    const char* title; // for people, within a sentence
    Source source;
    std::array<std::string_view, 5> keys; // of the ticket; "" for no more
};
inline constexpr std::array<CommandSpec, 7> kFilterCommands{{
    {"com.orvan.CustomPaperTypes", "custom papers", CommandSpec::Source::document, {OVOVGCustomPaperTypes}},
    {"com.orvan.DeviceStatus", "trays and supplies", CommandSpec::Source::document,
        {OVCPSSInputTrays, OVCPSSColorantHousing, kToldTrays, kToldSupplies, kToldOtherSupplies}},
    {"com.orvan.StoredJobs", "stored jobs", CommandSpec::Source::document, {kSavedJobs}},
    {"com.orvan.ColorModes", "color modes", CommandSpec::Source::document, {kColorModes}},
    {"com.orvan.Permissions", "permissions", CommandSpec::Source::document, {kColorPermissions}},
    {"com.orvan.JobAccounting", "job accounting", CommandSpec::Source::accounting, {OVSNMPJobAccountingOID}},
    {"ReportLevels", "levels", CommandSpec::Source::levels, {}},
}};

// Null when there is none. As CUPS's own commands, they are the same in capitals and in small letters.
inline const CommandSpec* findCommand(const std::string& name) {
    const auto found = std::ranges::find_if(
        kFilterCommands, [&](const CommandSpec& spec) { return strcasecmp(spec.name, name.c_str()) == 0; });
    return found != kFilterCommands.end() ? &*found : nullptr;
}

} // namespace orvan

// All commands of `orvan`, in the order of the help. Each stands in a file of its own.
#pragma once

#include "Orvan/Command.h"

namespace orvan {

extern const Command kPanelCommand;
extern const Command kCheckCommand;
extern const Command kStatusCommand;
extern const Command kPapersCommand;
extern const Command kPresetsCommand;
extern const Command kPlistCommand;
extern const Command kChunksCommand;
extern const Command kTicketCommand;
extern const Command kURLCommand;
extern const Command kPingCommand;
extern const Command kFetchCommand;
extern const Command kDoctorCommand;
extern const Command kOpenModuleCommand;

inline constexpr const Command* kCommands[]{&kPanelCommand, &kCheckCommand, &kStatusCommand, &kPapersCommand,
    &kPresetsCommand, &kPlistCommand, &kChunksCommand, &kTicketCommand, &kURLCommand, &kPingCommand,
    &kFetchCommand, &kDoctorCommand, &kOpenModuleCommand};

} // namespace orvan

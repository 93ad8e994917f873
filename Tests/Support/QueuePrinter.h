// A queue's printer, fetched as a program does.
#pragma once

#include "PrintDialog/Host/QueuePPD.h"

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <string>

namespace orvan {

inline std::shared_ptr<SchedulerPrinter> queuePrinter(
    const std::string& queue, SchedulerPrinterOptions options = {.deadline = std::chrono::seconds(100)}) {
    platform::Failure error;
    auto opened = fetchQueue(queue, std::chrono::seconds(100), error);
    EXPECT_TRUE(opened) << error.value_or("");
    return opened ? std::make_shared<SchedulerPrinter>(std::move(opened->fetched), options) : nullptr;
}

} // namespace orvan

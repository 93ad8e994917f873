// What the tests of the channel share: a dialog with a PPD, a delegate that remembers, and a running loop.
#pragma once

#include "BiDi/OrvanBiDi.h"
#include "Tests/Support/DerivedPPD.h"
#include "Tests/Support/FakePrinter.h"

#include <cups/cups.h>
#include <glib.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace orvan {

// Settings that the process reads once; made before any test.
class ChannelEnvironment : public testing::Environment {
public:
    explicit ChannelEnvironment(const char* release) : release_(release) {}
    void SetUp() override {
        std::filesystem::create_directories(folder() / "orvan");
        ::setenv("XDG_CONFIG_HOME", folder().c_str(), 1);
        ::setenv("CUPS_SERVERROOT", folder().c_str(), 1);
        ::setenv("ORVAN_SYSTEM_RELEASE", release_, 1);
        ::setenv("CUPS_SERVER", "/no/such/socket", 1);
        ::setenv("LANGUAGE", "de", 1);
        ::setenv("LC_ALL", "de_DE.UTF-8", 1);
        ::setenv("DISPLAY", ":77", 1);
        cupsServer();
    }
    void TearDown() override { std::filesystem::remove_all(folder()); }

    // The person's configuration, and where libcups, on this thread, looks for the PPDs of a local scheduler.
    static const std::filesystem::path& folder() {
        static const auto path =
            std::filesystem::path(testing::TempDir()) / ("config" + std::to_string(::getpid()));
        return path;
    }

private:
    const char* release_;
};

class RememberingDelegate : public OrvanBiDiDelegate {
public:
    void receivedBiDiResponse(const platform::PropertyList& response) override {
        responses.push_back(response);
        if (onResponse) onResponse();
    }

    std::string text(std::size_t index, const char* key) const {
        const platform::PropertyList* value = index < responses.size() ? responses[index].find(key) : nullptr;
        const std::string* string = value != nullptr ? value->asString() : nullptr;
        return string != nullptr ? *string : "(none)";
    }
    std::vector<std::string> commands() const {
        std::vector<std::string> names;
        for (std::size_t index = 0; index < responses.size(); ++index)
            names.push_back(text(index, "command"));
        return names;
    }

    std::vector<platform::PropertyList> responses;
    std::function<void()> onResponse;
};

// A PPD with some lines of a test's own.
inline std::string ppdText(const std::string& lines) {
    return DerivedPPD().append(lines).text();
}

class Dialog : public platform::PDEPluginCallback {
public:
    Dialog(const std::filesystem::path& ppdFile, std::shared_ptr<platform::PMPrinter> printer)
        : ppd_(ppdOpenFile(ppdFile.c_str())), printer_(std::move(printer)) {}
    Dialog(const Dialog&) = delete;
    Dialog& operator=(const Dialog&) = delete;
    ~Dialog() override { ppdClose(ppd_); }

    ppd_file_t* ppdFile() override { return ppd_; }
    std::shared_ptr<platform::PMPrinter> PMPrinter() override { return printer_; }
    void willChangePPDOptionKeyValuePpdChoice(const std::string&, const std::string&) override {}

private:
    ppd_file_t* ppd_;
    std::shared_ptr<platform::PMPrinter> printer_;
};

class ChannelTest : public testing::Test {
protected:
    std::filesystem::path writeFile(const std::string& name, const std::string& text) const {
        return temporary_.write(name, text);
    }
    std::string readFile(const std::string& name) const { return contents(folder_ / name); }

    // A channel of its own dialog, with the fixture's delegate.
    std::shared_ptr<OrvanBiDi> channelFor(const std::filesystem::path& ppd,
        std::shared_ptr<platform::PMPrinter> printer = std::make_shared<FakePrinter>()) {
        auto dialog = std::make_shared<Dialog>(ppd, std::move(printer));
        EXPECT_NE(dialog->ppdFile(), nullptr);
        auto channel = OrvanBiDi::initWithPDECallbackObject(std::move(dialog));
        channel->setDelegate(delegate_);
        return channel;
    }

    static bool runLoopUntil(const std::function<bool()>& isDone, double seconds = 100) {
        const gint64 end = g_get_monotonic_time() + static_cast<gint64>(seconds * G_USEC_PER_SEC);
        while (!isDone() && g_get_monotonic_time() < end)
            if (!g_main_context_iteration(nullptr, FALSE)) g_usleep(1000);
        return isDone();
    }

    TempFolder temporary_;
    std::filesystem::path folder_ = temporary_.path();
    std::shared_ptr<RememberingDelegate> delegate_ = std::make_shared<RememberingDelegate>();
};

} // namespace orvan

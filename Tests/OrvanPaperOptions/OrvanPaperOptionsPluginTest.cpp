// The plug-in as a dialog meets it: loaded from its bundle.
#include "Tests/OrvanPaperOptions/PanelFixture.h"

#include <gtest/gtest.h>

namespace orvan {
namespace {

class OrvanPaperOptionsPluginTest : public PanelTest {
protected:
    void SetUp() override {
        ASSERT_NE(bundle_, nullptr);
        platform::Failure error;
        plugin_ = bundle_->createPrincipalClass(error);
        ASSERT_NE(plugin_, nullptr) << error.value_or("");
        ASSERT_TRUE(plugin_->initWithBundle(bundle_));
    }

    std::shared_ptr<const platform::PDEPlugin::PanelList> panels(std::string_view type) {
        return plugin_->PDEPanelsForTypeWithHostInfo(type, std::make_shared<CountingCallback>(ppd_));
    }

    std::unique_ptr<platform::PDEPlugin> plugin_;
};

TEST_F(OrvanPaperOptionsPluginTest, HasOnePanelForPrintDialogsOnly) {
    const auto list = panels(platform::kPrintDialogTypeIdentifier);
    ASSERT_NE(list, nullptr);
    ASSERT_EQ(list->size(), 1U);
    EXPECT_EQ(list->front()->panelKind(), "com.orvan.qbv.print.pde.cocoa.paperfeed");

    for (const char* type : {"", "bdb091f4-e57f-11d3-b5cc-0050e4603277",
             "BDB091F4-E57F-11D3-B5CC-0050E4603277 ", "BDB091F4-E57F-11D3-B5CC-0050E4603278"}) {
        const auto none = panels(type);
        ASSERT_NE(none, nullptr) << type;
        EXPECT_TRUE(none->empty()) << type;
    }
    ppd_.keepOptions({});
    EXPECT_EQ(panels(platform::kPrintDialogTypeIdentifier), nullptr);
    EXPECT_EQ(CountingCallback::alive, 1) << "only the first dialog's is still in use";
}

TEST_F(OrvanPaperOptionsPluginTest, HasNoPanelWithoutADialogOrItsRecord) {
    EXPECT_EQ(plugin_->PDEPanelsForTypeWithHostInfo(platform::kPrintDialogTypeIdentifier, nullptr), nullptr);
    class Empty final : public platform::PDEPluginCallback {
        ppd_file_t* ppdFile() override { return nullptr; }
        std::shared_ptr<platform::PMPrinter> PMPrinter() override { return nullptr; }
        void willChangePPDOptionKeyValuePpdChoice(const std::string&, const std::string&) override {}
    };
    EXPECT_EQ(plugin_->PDEPanelsForTypeWithHostInfo(
                  platform::kPrintDialogTypeIdentifier, std::make_shared<Empty>()),
        nullptr);
    bundle_.reset();
    EXPECT_EQ(panels(platform::kPrintDialogTypeIdentifier), nullptr);
}

TEST_F(OrvanPaperOptionsPluginTest, KeepsItsLastListAndNothingElse) {
    auto first = panels(platform::kPrintDialogTypeIdentifier);
    const std::weak_ptr<platform::PDEPanel> panel = first->front();
    first.reset();
    EXPECT_FALSE(panel.expired());
    panels("another type");
    EXPECT_TRUE(panel.expired());

    std::shared_ptr<platform::PDEPanel> held = panels(platform::kPrintDialogTypeIdentifier)->front();
    const std::weak_ptr<platform::Bundle> bundle = bundle_;
    bundle_.reset();
    plugin_.reset();
    EXPECT_FALSE(held->panelName().empty()) << "a panel may be held longer than its plug-in";
    held.reset();
    EXPECT_EQ(CountingCallback::alive, 0);
    EXPECT_TRUE(bundle.expired());
}

} // namespace
} // namespace orvan

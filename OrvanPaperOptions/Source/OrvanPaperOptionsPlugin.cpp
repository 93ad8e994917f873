#include "OrvanPaperOptions/Source/OrvanPaperOptionsPlugin.h"

#include "OrvanPaperOptions/Source/OrvanPaperOptions.h"
#include "Platform/SystemLog.h"

PLATFORM_PRINCIPAL_CLASS(OrvanPaperOptionsPlugin, orvan::OrvanPaperOptionsPlugin)

namespace orvan {

OrvanPaperOptionsPlugin::~OrvanPaperOptionsPlugin() {
    platform::systemLog("paper options plugin dealloc");
}

bool OrvanPaperOptionsPlugin::initWithBundle(const std::shared_ptr<platform::Bundle>& bundle) {
    pluginBundle_ = bundle;
    return true;
}

std::shared_ptr<const platform::PDEPlugin::PanelList> OrvanPaperOptionsPlugin::PDEPanelsForTypeWithHostInfo(
    std::string_view dialogType, std::shared_ptr<platform::PDEPluginCallback> hostInfo) {
    const auto panels = std::make_shared<PanelList>();
    panels->reserve(2);
    PDEs_ = panels;
    if (dialogType == platform::kPrintDialogTypeIdentifier) {
        auto panel = OrvanPaperOptions::initWithCallbackAndBundle(std::move(hostInfo), pluginBundle_.lock());
        if (panel != nullptr) panels->push_back(std::move(panel));
        if (panels->empty()) PDEs_ = nullptr;
    }
    return PDEs_;
}

} // namespace orvan

// The plug-in's principal class: makes the paper options panel for print dialogs.
#pragma once

#include "Platform/Bundle.h"
#include "Platform/PrintDialog.h"

#include <memory>
#include <string_view>

namespace orvan {

class OrvanPaperOptionsPlugin final : public platform::PDEPlugin {
public:
    ~OrvanPaperOptionsPlugin() override;

    bool initWithBundle(const std::shared_ptr<platform::Bundle>& bundle) override;
    std::shared_ptr<const PanelList> PDEPanelsForTypeWithHostInfo(
        std::string_view dialogType, std::shared_ptr<platform::PDEPluginCallback> hostInfo) override;

private:
    std::weak_ptr<platform::Bundle> pluginBundle_;
    std::shared_ptr<const PanelList> PDEs_; // the list that was answered last
};

} // namespace orvan

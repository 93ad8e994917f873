#include "Platform/Bundle.h"

#include "Tests/Support/Processes.h"
#include "Tests/Support/TempFolder.h"

#include <gtest/gtest.h>

using namespace platform;

namespace {

const std::string kObject = ORVAN_PLUGIN_FOLDER "/Contents/Linux/OrvanPaperOptions.so";

// A bundle that a test writes file by file.
class BundleTest : public testing::Test {
protected:
    std::filesystem::path contents() const { return folder_.path() / "Test.plugin" / "Contents"; }
    void write(const std::string& name, std::string_view bytes) { folder_.write(contents() / name, bytes); }
    void writeInfo(const std::string& entries) {
        write("Info.plist", "<plist version='1.0'><dict>" + entries + "</dict></plist>");
    }
    std::shared_ptr<Bundle> open() { return Bundle::open(folder_.path() / "Test.plugin", error_); }
    std::shared_ptr<Bundle> openEmpty() {
        writeInfo("");
        return open();
    }

    orvan::TempFolder folder_;
    platform::Failure error_;
};

std::string entry(const std::string& key, const std::string& text) {
    return "<key>" + key + "</key><string>" + text + "</string>";
}

} // namespace

TEST_F(BundleTest, isOpenedByItsInfo) {
    EXPECT_EQ(open(), nullptr);
    EXPECT_NE(error_.value_or("").find("Info.plist: there is no such file"), std::string::npos)
        << error_.value_or("");
    EXPECT_EQ(Bundle::open(folder_.path()), nullptr) << "nobody asked for the message";
    for (const char* damaged :
        {"", "<plist version='1.0'><dict>", "<plist><array/></plist>", "bplist00", "\xFF"}) {
        write("Info.plist", damaged);
        error_.reset();
        EXPECT_EQ(open(), nullptr) << damaged;
        EXPECT_TRUE(error_.value_or("").starts_with(
            "cannot open the bundle: " + (contents() / "Info.plist").string() + ": "))
            << error_.value_or("");
    }
    writeInfo(entry("BundleName", "Test") + "<key>Number</key><integer>3</integer>");
    const auto bundle = open();
    ASSERT_NE(bundle, nullptr) << error_.value_or("");
    EXPECT_EQ(bundle->folder(), folder_.path() / "Test.plugin");
    ASSERT_NE(bundle->infoString("BundleName"), nullptr);
    EXPECT_EQ(*bundle->infoString("BundleName"), "Test");
    EXPECT_EQ(bundle->infoString("Number"), nullptr);
    EXPECT_EQ(bundle->infoString("Missing"), nullptr);
}

TEST_F(BundleTest, saysWhyItHasNoPlugIn) {
    write("Linux/text.so", "this is no shared object");
    std::filesystem::create_symlink(kObject, contents() / "Linux" / "real.so");
    const struct {
        std::string info;
        const char* why;
    } cases[] = {
        {"", "is no plug-in"},
        {entry("BundleExecutable", "real.so"), "is no plug-in"},
        {entry("PrincipalClass", "OrvanPaperOptionsPlugin"), "is no plug-in"},
        {entry("BundleExecutable", "gone.so") + entry("PrincipalClass", "OrvanPaperOptionsPlugin"),
            "gone.so"},
        {entry("BundleExecutable", "text.so") + entry("PrincipalClass", "OrvanPaperOptionsPlugin"),
            "text.so"},
        {entry("BundleExecutable", "real.so") + entry("PrincipalClass", "Unknown"), "has no class Unknown"},
        {entry("BundleExecutable", "real.so") + entry("PrincipalClass", ""), "has no class"},
    };
    for (const auto& [info, why] : cases) {
        writeInfo(info);
        const auto bundle = open();
        ASSERT_NE(bundle, nullptr) << error_.value_or("");
        error_.reset();
        EXPECT_EQ(bundle->createPrincipalClass(error_), nullptr) << info;
        EXPECT_NE(error_.value_or("").find(why), std::string::npos) << error_.value_or("");
    }
    writeInfo(entry("BundleExecutable", "real.so") + entry("PrincipalClass", "OrvanPaperOptionsPlugin"));
    const auto bundle = open();
    const auto first = bundle->createPrincipalClass(error_);
    const auto second = bundle->createPrincipalClass(error_);
    ASSERT_NE(first, nullptr) << error_.value_or("");
    EXPECT_NE(first, second) << "each is a new one";
}

TEST_F(BundleTest, tellsTheOwnerNothingOfADamagedView) {
    const std::string good = "<popUp outlet='menu' action='known' x='0' y='0' width='1' height='1'/>";
    const std::string root = "<view outlet='root' x='0' y='0' width='1' height='1'>";
    std::string deep;
    for (int i = 0; i < 300; ++i)
        deep += root;
    const std::string cases[] = {
        "",
        "<plist/>",
        root + good,
        root + good + "<button x='0' y='0' width='1' height='1'/></view>",
        root + good + "<label x='0' y='0' width='1'/></view>",
        root + good + "<label x='zero' y='0' width='1' height='1'/></view>",
        root + good + "<label x='1 ' y='' width='1' height='1'/></view>",
        root + good + "</view><view/>",
        root + good + "\xFF</view>",
        deep,
    };
    ViewOwner owner;
    owner.setOutlet = [](std::string_view name, auto&&) { ADD_FAILURE() << "outlet " << name; };
    owner.action = [](std::string_view name) -> PopUpButton::Action {
        ADD_FAILURE() << "action " << name;
        return {};
    };
    const auto bundle = openEmpty();
    EXPECT_EQ(bundle->loadView("Test", owner, error_), nullptr);
    EXPECT_NE(error_.value_or("").find("Test.view"), std::string::npos) << error_.value_or("");
    for (const std::string& bytes : cases) {
        write("Resources/Test.view", bytes);
        error_.reset();
        EXPECT_EQ(bundle->loadView("Test", owner, error_), nullptr) << bytes;
        EXPECT_TRUE(error_.value_or("").starts_with("cannot read the view resource ")) << error_.value_or("");
        EXPECT_FALSE(error_.value_or("").ends_with(": ")) << "no reason: " << bytes;
    }
}

TEST_F(BundleTest, speaksThePersonsLanguage) {
    write("Resources/en.lproj/Localizable.strings",
        "\"Paper\" = \"Paper\"; \"Only\" = \"English\"; \"List\" = (a);");
    write("Resources/de.lproj/Localizable.strings", "\"Paper\" = \"Papier\";");
    write("Resources/fr.lproj/Localizable.strings", "\"Paper\" = \"Feuille\";");
    write("Resources/pt-BR.lproj/Localizable.strings", "\"Paper\" = \"Papel\";");
    write("Resources/nl.lproj/Localizable.strings", "\"Paper\" = damaged");
    const struct {
        const char* language;
        const char* all;
        const char* key;
        const char* text;
    } cases[] = {
        {"", "de_DE.UTF-8", "Paper", "Papier"},
        {"", "de_AT", "Paper", "Papier"},
        {"fr:de", "de_DE", "Paper", "Feuille"},
        {"eo:fr", "de_DE", "Paper", "Feuille"},
        {"", "pt_BR.UTF-8", "Paper", "Papel"},
        {"", "pt_PT.UTF-8", "Paper", "Paper"},
        {"", "C", "Paper", "Paper"},
        {"", "nl_NL", "Paper", "Paper"}, // its table is damaged
        {"", "../../../tmp", "Paper", "Paper"},
        {"", "de_DE", "Only", "Only"}, // a language's own table answers alone
        {"", "C", "Missing", "Missing"},
        {"", "C", "List", "List"},
    };
    const auto bundle = openEmpty();
    for (const auto& [language, all, key, text] : cases)
        EXPECT_EQ(orvan::inChild({{"LANGUAGE", language}, {"LC_ALL", all}},
                      [&bundle, key = key] { return bundle->localizedString(key); }),
            text)
            << language << '|' << all << '|' << key;
    EXPECT_EQ(bundle->languages(), (std::vector<std::string>{"de", "en", "fr", "nl", "pt-BR"}));
    EXPECT_EQ(bundle->inLanguage("fr")->localizedString("Paper"), "Feuille");
    EXPECT_EQ(bundle->inLanguage("eo")->localizedString("Only"), "English");
    std::filesystem::remove_all(contents() / "Resources");
    EXPECT_EQ(open()->localizedString("Paper"), "Paper");
    EXPECT_TRUE(open()->languages().empty());
}

#include "Platform/UserDefaults.h"

#include <glib.h>
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace platform {
namespace {

namespace fs = std::filesystem;

// GLib asks for the configuration folder once a process.
class ConfigurationFolder : public testing::Environment {
public:
    void SetUp() override {
        fs::create_directories(path_ / "orvan");
        ::setenv("XDG_CONFIG_HOME", path_.c_str(), 1);
    }
    void TearDown() override { fs::remove_all(path_); }

private:
    fs::path path_ = fs::path(testing::TempDir()) / ("config" + std::to_string(::getpid()));
};
const testing::Environment* const kFolder = testing::AddGlobalTestEnvironment(new ConfigurationFolder);

void write(const std::string& domain, const std::string& bytes, mode_t mode = 0600) {
    const std::string path = persistentDomainPath(domain);
    fs::remove(path);
    std::ofstream(path, std::ios::binary) << bytes;
    ::chmod(path.c_str(), mode);
}

TEST(PersistentDomain, IsReadAfreshInEveryForm) {
    EXPECT_EQ(persistentDomainForName("com.example.none"), std::nullopt);
    const PropertyList::Dictionary dictionary = {{"defaultPassword", "s3cret"}};
    for (const std::string& bytes : {PropertyList(dictionary).writeXML(),
             PropertyList(dictionary).writeBinary(), std::string("{ defaultPassword = s3cret; }")}) {
        write("com.example.Job", bytes);
        EXPECT_EQ(persistentDomainForName("com.example.Job"), dictionary);
    }
    write("com.example.Job", "{ defaultPassword = other; }");
    EXPECT_EQ(persistentDomainForName("com.example.Job")->at("defaultPassword"), PropertyList("other"));
    for (const std::string& bytes : {std::string("(a, list)"), std::string("<plist"), std::string()}) {
        write("com.example.Job", bytes);
        EXPECT_EQ(persistentDomainForName("com.example.Job"), std::nullopt) << bytes;
    }
}

TEST(PersistentDomain, OfOthersCountsAsAbsent) {
    const std::string text = "{ k = v; }";
    for (const auto& [mode, isTaken] : {std::pair{0600U, true}, {0400U, true}, {0644U, false}, {0640U, false},
             {0604U, false}, {0620U, false}, {0602U, false}, {0666U, false}}) {
        write("mode", text, mode);
        Failure problem;
        EXPECT_EQ(persistentDomainForName("mode", problem).has_value(), isTaken) << std::oct << mode;
        EXPECT_EQ(problem.value_or("").find("chmod 600 ") == std::string::npos, isTaken);
    }
    write("large", text + std::string(1048576, ' '));
    EXPECT_FALSE(persistentDomainForName("large"));
    ASSERT_EQ(::mkfifo(persistentDomainPath("pipe").c_str(), 0600), 0);
    EXPECT_FALSE(persistentDomainForName("pipe"));
    for (const std::string& name : {std::string(), std::string("../orvan/large"), std::string("a\0b", 3)})
        EXPECT_EQ(persistentDomainPath(name), "");
    if (::geteuid() == 0) {
        write("foreign", text);
        ASSERT_EQ(::chown(persistentDomainPath("foreign").c_str(), 1, 1), 0);
        EXPECT_FALSE(persistentDomainForName("foreign"));
    }
}

TEST(UserDefaults, FullUserNameIsTheAccounts) {
    const passwd* const account = ::getpwuid(::getuid());
    if (account == nullptr) GTEST_SKIP() << "this user has no account";
    const std::string field = account->pw_gecos;
    if (field.find('&') != std::string::npos) GTEST_SKIP() << "the account's name contains its user name";
    EXPECT_EQ(fullUserName(), field.substr(0, field.find(',')));
}

} // namespace
} // namespace platform

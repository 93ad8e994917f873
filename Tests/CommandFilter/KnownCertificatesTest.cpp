// Printers whose certificates nobody vouches for: remembered the first time, held to them afterwards.
#include "CommandFilter/Program/KnownCertificates.h"
#include "Tests/Support/DerivedPPD.h"
#include "Tests/Support/Processes.h"
#include "Tests/Support/TempFolder.h"
#include "Tests/Support/WebServer.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace orvan {
namespace {

const std::string kFirst = [] {
    std::string text = "00";
    for (int i = 1; i < 32; ++i)
        text += ":AB";
    return text;
}();
const std::string kSecond = "FF" + kFirst.substr(2);

TEST(KnownCertificates, HoldAServerToItsFirstCertificate) {
    const TempFolder folder;
    const std::filesystem::path file = folder.path() / "cache" / "certificates";
    const KnownCertificates certificates(file);
    EXPECT_FALSE(certificates.examine("Printer.example:443", kFirst).refusal);
    EXPECT_FALSE(certificates.examine("printer.example:443", kFirst).refusal);
    EXPECT_FALSE(certificates.examine("printer.example:8443", kSecond).refusal);
    const CertificateVerdict other = certificates.examine("printer.example:443", kSecond);
    EXPECT_TRUE(other.isOther);
    EXPECT_NE(other.refusal->find(kSecond + " now and was " + kFirst), std::string::npos) << *other.refusal;

    // A line that a full disk has cut is no line, and the next one is whole.
    std::ofstream(file, std::ios::app) << "cut:443 " << kFirst.substr(0, 20);
    std::string before = "?";
    EXPECT_FALSE(certificates.accept("new:443", kFirst, &before));
    EXPECT_EQ(before, "");
    EXPECT_FALSE(certificates.accept("PRINTER.example:443", kSecond, &before));
    EXPECT_EQ(before, kFirst);
    EXPECT_FALSE(certificates.examine("printer.example:443", kSecond).refusal);
    EXPECT_TRUE(certificates.examine("new:443", kSecond).isOther);
}

TEST(KnownCertificates, RefuseWhatCannotBeRemembered) {
    const TempFolder folder;
    const std::string file = folder.write("file", "");
    const std::pair<std::filesystem::path, const char*> cases[] = {
        {file + "/below", "Not a directory"}, {folder.path(), "Is a directory"}};
    for (const auto& [place, reason] : cases) {
        const CertificateVerdict verdict = KnownCertificates(place).examine("a:443", kFirst);
        EXPECT_FALSE(verdict.isOther);
        EXPECT_NE(verdict.refusal->find(place.string() + ": " + reason), std::string::npos);
    }
    EXPECT_TRUE(KnownCertificates(file).examine("a b:443", kFirst).refusal);
    std::filesystem::create_symlink(file, folder.path() / "link");
    EXPECT_TRUE(KnownCertificates(folder.path() / "link").examine("a:443", kFirst).refusal);
    std::filesystem::create_hard_link(file, folder.path() / "other-name");
    EXPECT_TRUE(KnownCertificates(folder.path() / "other-name").examine("a:443", kFirst).refusal);
    EXPECT_EQ(std::filesystem::file_size(file), 0U);
}

class CertificateMemory : public testing::Test {
protected:
    void SetUp() override {
        if (!WebServer::isInstalled()) GTEST_SKIP() << "nginx is not installed";
        std::ifstream document(ORVAN_STATUS_DOCUMENT);
        server_ = std::make_unique<WebServer>(
            std::string{std::istreambuf_iterator<char>(document), std::istreambuf_iterator<char>()});
        ppd_.replace(
            "*OVNStatusDocument: \"/status.xml\"\n", "*OVNStatusDocument: \"" + server_->modern() + "\"\n");
    }

    // What the filter says of a job with the password.
    std::string ask() const {
        const std::string job =
            folder_.write("job", "#CUPS-COMMAND\ncom.orvan.Permissions username=user password=secret\n");
        return runProgram({ORVAN_COMMAND_FILTER, "7", "ann", "Printer Status", "1", "", job},
            {{"DEVICE_URI", "socket://127.0.0.1"}, {"PPD", ppd_.file()},
                {"CUPS_CACHEDIR", folder_.path().string()}})
            .errors;
    }
    ProgramEnd accept(const std::string& server) const {
        return runProgram({ORVAN_COMMAND_FILTER, "--accept-certificate", server},
            {{"CUPS_CACHEDIR", folder_.path().string()}});
    }

    TempFolder folder_;
    DerivedPPD ppd_;
    std::unique_ptr<WebServer> server_;
};

TEST_F(CertificateMemory, KeepsThePasswordFromAnotherServer) {
    EXPECT_NE(ask().find("PPD: com.orvan.Permissions"), std::string::npos) << ask();
    EXPECT_NE(server_->log().find("GET"), std::string::npos);
    server_->becomeAnother();
    const std::string refused = ask();
    EXPECT_EQ(refused.find("PPD: com.orvan.Permissions0"), std::string::npos) << refused;
    EXPECT_EQ(server_->log(), ""); // not even the question
    const std::size_t error = refused.find("ERROR: The printer at https://127.0.0.1:");
    ASSERT_NE(error, std::string::npos) << refused;
    EXPECT_EQ(refused.find("ERROR:", error + 1), std::string::npos) << refused;
    EXPECT_NE(refused.find("another one than before"), std::string::npos) << refused;
    EXPECT_NE(refused.find("STATE: -offline-report"), std::string::npos) << refused;
    const std::string advice = "\"/usr/lib/cups/filter/commandtoorvan --accept-certificate 127.0.0.1:";
    EXPECT_NE(refused.find(advice), std::string::npos) << refused;

    if (geteuid() != 0) GTEST_SKIP() << "only root accepts certificates";
    const std::string host = server_->modern().substr(8, server_->modern().find('/', 8) - 8);
    const ProgramEnd end = accept(host);
    EXPECT_EQ(end.exitCode, 0) << end.errors;
    EXPECT_NE(end.output.find("The certificate of " + host + " is accepted"), std::string::npos)
        << end.output;
    EXPECT_NE(end.output.find("\nand was\n"), std::string::npos) << end.output;
    EXPECT_NE(ask().find("PPD: com.orvan.Permissions"), std::string::npos);
}

TEST_F(CertificateMemory, IsWrittenByRootAlone) {
    const ProgramEnd nobody = accept("127.0.0.1:1");
    EXPECT_EQ(nobody.exitCode, 1);
    EXPECT_EQ(nobody.output, "");
    const char* const reason = geteuid() == 0
                                   ? "commandtoorvan: no certificate of 127.0.0.1:1: cannot connect"
                                   : "only root accepts";
    EXPECT_NE(nobody.errors.find(reason), std::string::npos) << nobody.errors;
}

} // namespace
} // namespace orvan

#include "config/configuration.h"

#include <gtest/gtest.h>

#include "fakes/fake_platform.h"
#include "fakes/temporary_directory.h"

namespace vorn {
namespace {

TEST(Configuration, LooksUpOnlyByWholeSelectorsAndKeys) {
    const TemporaryDirectory directory;
    const std::string longText(1U << 20U, 'x');
    TemporaryDirectory::write(
        "look.xml", "\xEF\xBB\xBF<VORN a='root'><x Name='Ovrin' a='" + longText + "'/></VORN>");
    ConfigurationDocument document;
    document.load("look.xml");
    EXPECT_EQ(document.getSetting("@a", "@Name=Ovrin(R)"), longText);
    EXPECT_EQ(document.getSetting("@a", "Name=Ovrin"), "");
    EXPECT_EQ(document.getSetting("@a", "@Name="), "");
    EXPECT_EQ(document.getSetting("@a", ""), "root");
    EXPECT_EQ(document.getSetting("", ""), "");
}

TEST(Configuration, IsReplacedWholeAtEachLoadAndStandsAfterAnError) {
    const TemporaryDirectory directory;
    const FakePlatform platform;
    TemporaryDirectory::write("VORNconfig.xml", R"(<VORN Site="first" BaseClock="ENABLE"/>)");
    reloadProcessConfiguration();
    TemporaryDirectory::write("VORNconfig.xml", R"(<VORN Site="second"/>)");
    reloadProcessConfiguration();
    EXPECT_EQ(processConfiguration().settings.baseClock, "");
    TemporaryDirectory::write("VORNconfig.xml", "<VORN");
    EXPECT_THROW(reloadProcessConfiguration(), rapidxml::parse_error);
    EXPECT_EQ(processConfiguration().settings.site, "second");
}

}  // namespace
}  // namespace vorn

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

TEST(Configuration, TakesTheEntryUnlessSkippedAndStandsAfterAnError) {
    const TemporaryDirectory directory;
    FakePlatform platform;
    platform.processor.setBrand("   Ovrin(R) i7");
    const std::string entry = "<P CPUName='Ovrin i7' L2Cache='1MB'/></VORN>";
    TemporaryDirectory::write("VORNconfig.xml", "<VORN>" + entry);
    reloadProcessConfiguration();
    EXPECT_EQ(processConfiguration().settings.brandString, "Ovrin(R) i7");
    EXPECT_EQ(processConfiguration().settings.l2Cache, "1MB");
    TemporaryDirectory::write("VORNconfig.xml", "<VORN SkipConfig='yes' Site='second'>" + entry);
    reloadProcessConfiguration();
    EXPECT_EQ(processConfiguration().settings.brandString, "");
    EXPECT_EQ(processConfiguration().settings.l2Cache, "");
    TemporaryDirectory::write("VORNconfig.xml", "<VORN");
    EXPECT_THROW(reloadProcessConfiguration(), rapidxml::parse_error);
    EXPECT_EQ(processConfiguration().settings.site, "second");
}

}  // namespace
}  // namespace vorn

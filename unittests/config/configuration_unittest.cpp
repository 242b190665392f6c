#include "config/configuration.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "fakes/captured_console.h"
#include "fakes/fake_platform.h"
#include "fakes/temporary_directory.h"

namespace vorn {
namespace {

const char* const settingsError =
    "\n-------------------------------\n"
    "Cannot locate config file: 'VORNconfig.xml'! \n"
    "Application terminated! \n"
    "\n-------------------------------\n";

class ConfigurationTest : public testing::Test {
protected:
    TemporaryDirectory directory_;
    FakePlatform platform_;

    static std::string look(const std::string& xml, const std::string& key,
                            const std::string& selector = "") {
        TemporaryDirectory::write("look.xml", xml);
        ConfigurationDocument document;
        document.load("look.xml");
        return document.getSetting(key, selector);
    }

    static Settings settingsOf(const std::string& xml) {
        TemporaryDirectory::write("VORNconfig.xml", xml);
        return loadConfiguration()->settings;
    }

    static std::string raisedBy(const std::string& xml) {
        try {
            settingsOf(xml);
        } catch (const std::string& text) {
            return text;
        }
        return "(nothing raised)";
    }
};

TEST_F(ConfigurationTest, WalksDownFirstChildrenAndAlongSiblingsButNeverUp) {
    EXPECT_EQ(look(R"(<VORN a="root"><x a="child"/></VORN>)", "@a"), "root");
    EXPECT_EQ(look(R"(<VORN><x a="child"/></VORN>)", "@a"), "child");
    EXPECT_EQ(look(R"(<VORN><x/><y a="second"/></VORN>)", "@a"), "second");
    EXPECT_EQ(look(R"(<VORN><x><z a="deep"/></x><y a="second"/></VORN>)", "@a"), "deep");
    EXPECT_EQ(look(R"(<VORN><x><z/></x><y a="second"/></VORN>)", "@a"), "");
    EXPECT_EQ(look(R"(<VORN>text<y a="after text"/></VORN>)", "@a"), "after text");
    EXPECT_EQ(look(R"(<VORN a="x &lt;&amp;"/>)", "@a"), "x <&");
    EXPECT_EQ(look(R"(<VORN A="upper"/>)", "@a"), "");
    EXPECT_EQ(look(R"(<VORN a="x"/>)", ""), "");
}

TEST_F(ConfigurationTest, SelectsTheFirstEntryWithAMatchingAttribute) {
    const std::string xml =
        R"(<VORN BUSSpeed="root">
             <Processor CPUName="Ovrin Core i7 3.40GHz" BUSSpeed="first"/>
             <Processor Alias="Ovrin Core i5" BUSSpeed="second"><Cache L2Cache="inner"/></Processor>
             <Processor CPUName="Ovrin Core i5" BUSSpeed="third"/>
           </VORN>)";
    const std::string key = "@BUSSpeed";
    EXPECT_EQ(look(xml, key, "@CPUName=Ovrin(R) Core(TM) i7 CPU @ 3.40GHz"), "first");
    EXPECT_EQ(look(xml, key, "@CPUName=Ovrin(R) Core(TM) i5 processor"), "second");
    EXPECT_EQ(look(xml, "@L2Cache", "@CPUName=Ovrin Core i5"), "inner");
    EXPECT_EQ(look(xml, key, "@CPUName=Core Ovrin i5"), "");
    EXPECT_EQ(look(xml, key, "@CPUName=Ovrin Core i9"), "");
    EXPECT_EQ(look(xml, key, "@CPUName="), "");
    EXPECT_EQ(look(xml, key, "CPUName=Ovrin Core i5"), "");
}

TEST_F(ConfigurationTest, FillsEveryKeyFromTheFile) {
    std::string xml = "<VORN";
    for (const SettingKey& entry : generalKeys) {
        xml +=
            " " + std::string(entry.key.substr(1)) + "=\"value of " + std::string(entry.key) + "\"";
    }
    const Settings settings = settingsOf(xml + "/>");
    for (const SettingKey& entry : generalKeys) {
        EXPECT_EQ(settings.*entry.setting, "value of " + std::string(entry.key));
    }
    EXPECT_EQ(generalKeys.front().key, "@SkipConfig");
    EXPECT_EQ(generalKeys[45].key, "@StopOnFail");
}

TEST_F(ConfigurationTest, PicksTheProcessorsEntryByItsBrandUnlessSkipped) {
    const std::string entry =
        R"(<P CPUName="Ovrin Core i7" L2Cache="1MB" L3Cache="8MB" BUSSpeed="1333"/></VORN>)";
    platform_.processor.setBrand("    Ovrin(R) Core(TM) i7 CPU");
    const Settings found = settingsOf("<VORN>" + entry);
    EXPECT_EQ(found.brandString, "Ovrin(R) Core(TM) i7 CPU");
    EXPECT_EQ(found.cpuName, "Ovrin Core i7");
    EXPECT_EQ(found.l2Cache, "1MB");
    EXPECT_EQ(found.l3Cache, "8MB");
    EXPECT_EQ(found.busSpeed, "1333");

    for (const char* skip : {"YES", "yes", "Yes"}) {
        const Settings skipped =
            settingsOf("<VORN SkipConfig=\"" + std::string(skip) + "\">" + entry);
        EXPECT_EQ(skipped.busSpeed, "");
        EXPECT_EQ(skipped.brandString, "");
    }
    EXPECT_EQ(settingsOf("<VORN SkipConfig=\"YES \">" + entry).busSpeed, "1333");

    platform_.processor.setBrand("   ");
    EXPECT_EQ(settingsOf("<VORN>" + entry).busSpeed, "");
}

TEST_F(ConfigurationTest, EndsTheProcessWhenThereIsNoFileToRead) {
    for (const bool directoryInItsPlace : {false, true}) {
        if (directoryInItsPlace) {
            std::filesystem::create_directory("VORNconfig.xml");
        }
        const CapturedConsole console;
        try {
            loadConfiguration();
            FAIL() << "loaded";
        } catch (const ProcessEnded& end) {
            EXPECT_EQ(end.status, 1);
        }
        EXPECT_EQ(console.text(), "File VORNconfig.xml not found!\n");
    }
}

TEST_F(ConfigurationTest, RaisesTheParsersOwnErrorForMalformedText) {
    for (const char* xml : {"VORN", "<VORN", "<VORN a=>", "<VORN><x></VORN", "<VORN a='1' b"}) {
        EXPECT_THROW(settingsOf(xml), rapidxml::parse_error) << xml;
    }
}

TEST_F(ConfigurationTest, RaisesOneTextWhenTheRootIsMissing) {
    EXPECT_EQ(raisedBy(""), settingsError);
    EXPECT_EQ(raisedBy("<Other SkipConfig=\"YES\"/>"), settingsError);
    EXPECT_EQ(raisedBy("<vorn/>"), settingsError);
}

TEST_F(ConfigurationTest, ReadsAByteOrderMarkAndAVeryLongAttribute) {
    const std::string text(1U << 20U, 'x');
    const Settings settings = settingsOf("\xEF\xBB\xBF<VORN Site=\"" + text + "\"/>");
    EXPECT_EQ(settings.site, text);
}

TEST_F(ConfigurationTest, ReplacesEverythingAtEachLoadAndNothingAtAnError) {
    TemporaryDirectory::write("VORNconfig.xml", R"(<VORN Site="first" BaseClock="ENABLE"/>)");
    reloadProcessConfiguration();
    TemporaryDirectory::write("VORNconfig.xml", R"(<VORN Site="second"/>)");
    reloadProcessConfiguration();
    EXPECT_EQ(processConfiguration().settings.site, "second");
    EXPECT_EQ(processConfiguration().settings.baseClock, "");
    TemporaryDirectory::write("VORNconfig.xml", "<VORN");
    EXPECT_THROW(reloadProcessConfiguration(), rapidxml::parse_error);
    EXPECT_EQ(processConfiguration().settings.site, "second");
}

TEST(IntegerOf, ReadsTheLeadingNumberAndNamesWhatIsNone) {
    Settings settings;
    for (const auto& [text, value] : {std::pair("10", 10), std::pair(" -3", -3), std::pair("5s", 5),
                                      std::pair("2147483647", 2147483647)}) {
        settings.primeNumGenTimer = text;
        EXPECT_EQ(integerOf(settings, &Settings::primeNumGenTimer), value);
    }
    const auto textOfError = [&](const char* value) -> std::string {
        settings.primeNumGenTimer = value;
        try {
            integerOf(settings, &Settings::primeNumGenTimer);
        } catch (const std::invalid_argument& error) {
            return std::string("invalid: ") + error.what();
        } catch (const std::out_of_range& error) {
            return std::string("range: ") + error.what();
        }
        return "nothing raised";
    };
    EXPECT_EQ(textOfError(""), "invalid: @PrimeNumGenTimer is \"\": not a number");
    EXPECT_EQ(textOfError("ten"), "invalid: @PrimeNumGenTimer is \"ten\": not a number");
    EXPECT_EQ(textOfError("2147483648"),
              "range: @PrimeNumGenTimer is \"2147483648\": beyond 32 bits");
}

TEST_F(ConfigurationTest, RefusesElementsNestedWithoutEnd) {
    const auto nested = [](std::size_t depth) {
        std::string text = "<VORN>\n";
        for (std::size_t level = 0; level < depth; ++level) {
            text += "<a b='>'>\n";
        }
        return text;
    };
    const auto message = [](const std::string& text) -> std::string {
        try {
            look(text, "@a");
        } catch (const rapidxml::parse_error& error) {
            return std::string("the parser's: ") + error.what();
        } catch (const std::runtime_error& error) {
            return error.what();
        }
        return "read";
    };
    EXPECT_EQ(message(nested(100)), "the parser's: unexpected end of data");
    EXPECT_EQ(message(nested(101)), "line 102: elements nest deeper than 100 levels");
    EXPECT_EQ(message(nested(1000000)), "line 102: elements nest deeper than 100 levels");
    std::string many = "<?a <b> ?><!DOCTYPE VORN [<!ELEMENT a (b)> <b>]><VORN>";
    for (int entry = 0; entry < 1000; ++entry) {
        many += "<a b='/>'/><!-- <a> --><![CDATA[<a>]]><!x <a><a\n></a>";
    }
    EXPECT_EQ(message(many + "</VORN>"), "read");
}

}  // namespace
}  // namespace vorn

#include "report/text.h"

#include <gtest/gtest.h>

namespace vorn {
namespace {

const std::vector<std::string> removals{"\n", "(R)", "(TM)", "@", "CPU", "processor"};

TEST(CompareText, ComparesWordsAfterTheRemovals) {
    struct Row {
        const char* first;
        const char* second;
        const char* answer;
    };
    for (const Row& row :
         {Row{"Ovrin(R) Core(TM) i7 CPU @ 3.40GHz", "Ovrin Core i7 3.40GHz", "SAME"},
          Row{"Ovrin Core  i7", "Ovrin Core i7\n", "SAME"},
          Row{"Ovrin Core i7", "Core Ovrin i7", "DIFFERENT"},
          Row{"Ovrin Core i7", "Ovrin Core i7 X", "DIFFERENT"},
          Row{"Ovrin Core i7", "Ovrin core i7", "DIFFERENT"},
          Row{"Ovrin Processor", "Ovrin", "DIFFERENT"}, Row{"CPU processor", "@", "SAME"},
          Row{"", "CPU", "DIFFERENT"}, Row{"CPU", "", "DIFFERENT"}, Row{"", "", "DIFFERENT"}}) {
        EXPECT_EQ(compareText(row.first, row.second, removals), row.answer)
            << row.first << " | " << row.second;
    }
}

TEST(LeadingInteger, ReadsWhatAtoiReadsAndStaysInRange) {
    struct Row {
        const char* text;
        int value;
    };
    for (const Row& row :
         {Row{"12", 12}, Row{" -3x", -3}, Row{"+7", 7}, Row{"", 0}, Row{"x5", 0}, Row{"0x10", 0},
          Row{"2147483648", 2147483647}, Row{"-99999999999999999999", -2147483647 - 1}}) {
        EXPECT_EQ(leadingInteger(row.text), row.value) << row.text;
    }
}

TEST(WithoutWords, RemovesInListOrderAndWhatARemovalBringsTogether) {
    EXPECT_EQ(withoutWords("CCPUPU", {"CPU"}), "");
    EXPECT_EQ(withoutWords("C(R)PU", {"(R)", "CPU"}), "");
    EXPECT_EQ(withoutWords("C(R)PU", {"CPU", "(R)"}), "CPU");
    EXPECT_EQ(withoutWords("text", {""}), "text");
}

TEST(UpperCase, ConvertsAsciiLettersOnly) {
    EXPECT_EQ(upperCase("aZ\xE4{`1"), "AZ\xE4{`1");
}

TEST(LeadingFloat, ReadsTheNumberAtTheStart) {
    EXPECT_EQ(leadingFloat(" 1066.5 MHz"), 1066.5F);
    EXPECT_EQ(leadingFloat("fast"), 0.0F);
    EXPECT_EQ(leadingDouble(" -.125e1%"), -1.25);
    for (const char* word : {"Nano", "-inf", "+", "infinity", " ", "0x20", " -0X1p3"}) {
        EXPECT_EQ(leadingFloat(word), 0.0F);
        EXPECT_EQ(leadingDouble(word), 0.0);
    }
    EXPECT_EQ(leadingFloat(""), 0.0F);
}

}  // namespace
}  // namespace vorn

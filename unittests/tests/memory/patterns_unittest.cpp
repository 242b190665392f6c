#include "tests/memory/patterns.h"

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <random>
#include <vector>

#include "fakes/fake_platform.h"

namespace vorn {
namespace {

using Bytes = std::vector<unsigned char>;

/// One of the three tests, with what its blocks must hold, worked out unit by unit.
struct PatternTest {
    const char* name;
    bool (*write)(BlockSet&);
    bool (*verify)(BlockSet&);
    std::size_t width;
    std::uint32_t (*unit)(std::size_t index);
};

const std::vector<PatternTest> patternTests{
    {"test 1", writeAlternatingBytes, verifyAlternatingBytes, 1,
     [](std::size_t index) { return index % 2 == 0 ? 0U : 0xFFU; }},
    {"test 2", writeSlidingOnes, verifySlidingOnes, 4,
     [](std::size_t index) { return 1U << (index % 32); }},
    {"test 3", writeZeros, verifyZeros, 4, [](std::size_t) { return 0U; }},
};

/// Blocks of a simulated machine, filled with rubbish.
struct Blocks {
    FakePlatform platform;
    BlockSet set;

    Blocks(std::int32_t size, std::int32_t count) {
        AllocateBlocks(set, size, count, true, 0, noDeadline);
        for (unsigned char* const block : set.blocks) {
            std::memset(block, 0xA5, static_cast<std::size_t>(size));
        }
    }
    Bytes content(std::size_t block) const {
        return {set.blocks[block], set.blocks[block] + set.blockSize};
    }
};

std::uint32_t unitAt(const unsigned char* bytes, std::size_t width) {
    std::uint32_t unit = 0;
    std::memcpy(&unit, bytes, width);
    return unit;
}

/// The first unit of the set that is not what it must be, found the slow way.
std::optional<Mismatch> slowVerify(const PatternTest& test, const BlockSet& set) {
    for (std::int32_t block = 0; block < set.blockCount; ++block) {
        const unsigned char* const bytes = set.blocks[static_cast<std::size_t>(block)];
        for (std::size_t index = 0; index < static_cast<std::size_t>(set.blockSize) / test.width;
             ++index) {
            const std::uint32_t found = unitAt(bytes + index * test.width, test.width);
            if (found != test.unit(index)) {
                return Mismatch{block, index * test.width, test.width, test.unit(index), found};
            }
        }
    }
    return std::nullopt;
}

TEST(Patterns, CoverWholeUnitsOfBlocksOfAnySize) {
    for (const PatternTest& test : patternTests) {
        for (const std::int32_t size : {1, 3, 4, 7, 64, 127, 128, 129, 132, 255, 256, 4096, 5003}) {
            SCOPED_TRACE(testing::Message() << test.name << ", size " << size);
            Blocks blocks(size, 2);
            EXPECT_TRUE(test.write(blocks.set));
            Bytes expected(static_cast<std::size_t>(size), 0xA5);
            for (std::size_t index = 0; index < expected.size() / test.width; ++index) {
                const std::uint32_t unit = test.unit(index);
                std::memcpy(expected.data() + index * test.width, &unit, test.width);
            }
            EXPECT_EQ(blocks.content(0), expected);
            EXPECT_EQ(blocks.content(1), expected);
            EXPECT_TRUE(test.verify(blocks.set));
        }
    }
}

TEST(Patterns, FindEveryFlippedBitAtEveryEndOfEveryBlock) {
    constexpr std::size_t size = 128 + 64 + 20;  // whole periods and a rest
    for (const PatternTest& test : patternTests) {
        Blocks blocks(size, 3);
        ASSERT_TRUE(test.write(blocks.set));
        for (std::size_t block = 0; block < 3; ++block) {
            for (std::size_t bit = 0; bit < 8 * size; ++bit) {
                unsigned char& byte = blocks.set.blocks[block][bit / 8];
                byte = static_cast<unsigned char>(byte ^ (1U << (bit % 8)));
                ASSERT_FALSE(test.verify(blocks.set)) << test.name << ", bit " << bit;
                ASSERT_EQ(blocks.set.mismatch, slowVerify(test, blocks.set));
                byte = static_cast<unsigned char>(byte ^ (1U << (bit % 8)));
            }
        }
        EXPECT_TRUE(test.verify(blocks.set));
        EXPECT_FALSE(blocks.set.mismatch.has_value());
    }
}

/// Damages the set from a random place on: some bits of one byte, of the bytes up to the end, or of
/// every eighth of them (a data line) are stuck high or low.
void damage(BlockSet& set, std::mt19937& random) {
    unsigned char* const block = set.blocks[random() % set.blocks.size()];
    const auto size = static_cast<std::size_t>(set.blockSize);
    const std::size_t step = std::array{size, std::size_t{1}, std::size_t{8}}[random() % 3];
    const std::uint_fast32_t bits = random();
    const auto high = static_cast<unsigned char>(bits & (bits >> 8U));
    const auto low = static_cast<unsigned char>((bits >> 16U) & (bits >> 24U));
    for (std::size_t at = random() % size; at < size; at += step) {
        block[at] = static_cast<unsigned char>((block[at] | high) & ~low);
    }
}

TEST(Patterns, FindInjectedFaultsAndNoOthers) {
    std::mt19937 random(20240229);
    int faults = 0;
    int sound = 0;
    for (int trial = 0; trial < 8000; ++trial) {
        Blocks blocks(static_cast<std::int32_t>(64 * (1 + random() % 16)), 1 + trial % 3);
        for (const PatternTest& test : patternTests) {
            test.write(blocks.set);
            damage(blocks.set, random);
            const std::optional<Mismatch> expected = slowVerify(test, blocks.set);
            ++(expected ? faults : sound);
            ASSERT_EQ(test.verify(blocks.set), !expected) << test.name << ", trial " << trial;
            ASSERT_EQ(blocks.set.mismatch, expected);
        }
    }
    EXPECT_GT(faults, 10000);
    EXPECT_GT(sound, 1000) << "damage that changes nothing, like a line stuck low under zeros";
}

TEST(Patterns, EndAtANullBlockAndAfterTheBlockInWhichTheDeadlineExpires) {
    const Bytes untouched(256, 0xA5);
    for (const PatternTest& test : patternTests) {
        SCOPED_TRACE(test.name);
        Blocks blocks(256, 3);
        BlockSet& set = blocks.set;
        unsigned char* const held = std::exchange(set.blocks[1], nullptr);
        EXPECT_TRUE(test.write(set));
        EXPECT_TRUE(test.verify(set));
        set.blocks[1] = held;
        EXPECT_EQ(blocks.content(1), untouched);
        EXPECT_EQ(blocks.content(2), untouched);

        set.deadline = 2;
        blocks.platform.clock.nanosecondsPerLook = 1000000;  // a millisecond at each block
        EXPECT_TRUE(test.write(set));
        EXPECT_NE(blocks.content(1), untouched);
        EXPECT_EQ(blocks.content(2), untouched);
        EXPECT_TRUE(test.verify(set)) << "expired: only the first block is looked at";
        set.blocks[0][255] = 0x77;
        EXPECT_FALSE(test.verify(set));
    }
}

}  // namespace
}  // namespace vorn

#include "tests/memory/patterns.h"

#include <emmintrin.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

namespace vorn {

namespace {

/// All three patterns repeat after 32 words; a whole number of cache lines.
constexpr std::size_t periodSize = 128;
using Bytes = std::array<unsigned char, periodSize>;

/// One period of a pattern and the unit in which it is compared.
struct Pattern {
    alignas(16) Bytes period;
    std::size_t width;
};

constexpr Pattern alternatingBytes = [] {
    Pattern pattern{{}, 1};
    for (std::size_t index = 1; index < periodSize; index += 2) {
        pattern.period[index] = 0xFF;
    }
    return pattern;
}();

constexpr Pattern slidingOnes = [] {
    Pattern pattern{{}, 4};
    for (std::size_t bit = 0; bit < 32; ++bit) {
        pattern.period[4 * bit + bit / 8] = static_cast<unsigned char>(1U << (bit % 8));
    }
    return pattern;
}();

constexpr Pattern zeros{{}, 4};

/// A period in registers.
constexpr std::size_t lanesPerPeriod = periodSize / sizeof(__m128i);
struct Lanes {
    __m128i lane[lanesPerPeriod];
};

// The loops over lanes are written out by the compiler: as loops they would cost more than the
// memory does.
using AllLanes = std::make_index_sequence<lanesPerPeriod>;

const __m128i* lanesAt(const unsigned char* bytes) {
    return reinterpret_cast<const __m128i*>(bytes);
}

template <std::size_t... lane>
Lanes lanesOf(const Bytes& period, std::index_sequence<lane...> /*lanes*/) {
    return {{_mm_load_si128(lanesAt(period.data()) + lane)...}};
}

template <std::size_t... lane>
void streamPeriod(unsigned char* bytes, const Lanes& written, std::index_sequence<lane...>
                  /*lanes*/) {
    (_mm_stream_si128(reinterpret_cast<__m128i*>(bytes) + lane, written.lane[lane]), ...);
}

// The functions of the reading loop must be part of it: a call between the loads would cost a third
// of the speed.

/// What 16 bytes differ in from what they should be. The compiler cannot tell where the value came
/// from, and so can neither read it twice nor take it from the writes before.
[[gnu::always_inline]] inline __m128i differenceOf(const __m128i* memory, __m128i expected) {
    __m128i found = _mm_load_si128(memory);
    asm volatile("" : "+x"(found));
    return _mm_xor_si128(found, expected);
}

/// Reads half a period, a cache line, of which the lanes from `first` on are the expected ones.
/// False when it differs: `differences` then has, bit by bit, in what.
template <std::size_t first>
[[gnu::always_inline]] inline bool halfMatches(const unsigned char* bytes, const Lanes& expected,
                                               Bytes& differences) {
    const __m128i* const half = lanesAt(bytes) + first;
    const __m128i difference0 = differenceOf(half, expected.lane[first]);
    const __m128i difference1 = differenceOf(half + 1, expected.lane[first + 1]);
    const __m128i difference2 = differenceOf(half + 2, expected.lane[first + 2]);
    const __m128i difference3 = differenceOf(half + 3, expected.lane[first + 3]);
    const __m128i any = _mm_or_si128(_mm_or_si128(difference0, difference1),
                                     _mm_or_si128(difference2, difference3));
    if (_mm_movemask_epi8(_mm_cmpeq_epi8(any, _mm_setzero_si128())) == 0xFFFF) [[likely]] {
        return true;
    }
    auto* const to = reinterpret_cast<__m128i*>(differences.data()) + first;
    _mm_storeu_si128(to, difference0);
    _mm_storeu_si128(to + 1, difference1);
    _mm_storeu_si128(to + 2, difference2);
    _mm_storeu_si128(to + 3, difference3);
    return false;
}

/// Reads whole periods until one differs; the offset at which it stopped. `differences` then has
/// in what that one differs.
std::size_t matchingSize(const unsigned char* bytes, std::size_t size, const Lanes& expected,
                         Bytes& differences) {
    const Lanes lanes = expected;  // of the loop's own, in registers
    std::size_t offset = 0;
    while (offset < size && halfMatches<0>(bytes + offset, lanes, differences) &&
           halfMatches<lanesPerPeriod / 2>(bytes + offset, lanes, differences)) {
        offset += periodSize;
    }
    return offset;
}

std::uint32_t unitAt(const Bytes& bytes, std::size_t offset, std::size_t width) {
    std::uint32_t unit = 0;
    std::memcpy(&unit, bytes.data() + offset, width);
    return unit;
}

/// The first unit of a period that differs; its offset counts from the period's start.
Mismatch firstMismatch(const Pattern& pattern, const Bytes& differences) {
    const auto* const byte = std::find_if(differences.begin(), differences.end(),
                                          [](unsigned bits) { return bits != 0; });
    const auto index = static_cast<std::size_t>(byte - differences.begin());
    Mismatch mismatch;
    mismatch.width = pattern.width;
    mismatch.offset = index - index % pattern.width;
    mismatch.expected = unitAt(pattern.period, mismatch.offset, pattern.width);
    mismatch.found = mismatch.expected ^ unitAt(differences, mismatch.offset, pattern.width);
    return mismatch;
}

/// Bytes of a block of this size that the pattern covers: whole units.
std::size_t coveredSize(const Pattern& pattern, std::size_t blockSize) {
    return blockSize - blockSize % pattern.width;
}

void writeBlock(unsigned char* block, std::size_t blockSize, const Pattern& pattern) {
    const Lanes lanes = lanesOf(pattern.period, AllLanes());
    const std::size_t covered = coveredSize(pattern, blockSize);
    const std::size_t rest = covered % periodSize;
    for (std::size_t offset = 0; offset < covered - rest; offset += periodSize) {
        streamPeriod(block + offset, lanes, AllLanes());
    }
    std::memcpy(block + covered - rest, pattern.period.data(), rest);
    _mm_sfence();
}

/// The first unit of the block that does not match, if any.
std::optional<Mismatch> verifyBlock(const unsigned char* block, std::size_t blockSize,
                                    const Pattern& pattern) {
    const Lanes lanes = lanesOf(pattern.period, AllLanes());
    const std::size_t covered = coveredSize(pattern, blockSize);
    const std::size_t rest = covered % periodSize;
    const std::size_t periods = covered - rest;
    Bytes differences{};
    std::size_t matching = matchingSize(block, periods, lanes, differences);
    if (matching == periods) {
        alignas(16) Bytes last = pattern.period;
        std::memcpy(last.data(), block + periods, rest);
        matching += matchingSize(last.data(), periodSize, lanes, differences);
    }
    if (matching > periods) {
        return std::nullopt;
    }
    Mismatch mismatch = firstMismatch(pattern, differences);
    mismatch.offset += matching;
    return mismatch;
}

bool writeBlocks(BlockSet& set, const Pattern& pattern) {
    for (unsigned char* const block : set.blocks) {
        if (block == nullptr) {
            break;
        }
        writeBlock(block, static_cast<std::size_t>(set.blockSize), pattern);
        if (hasExpired(set.deadline)) {
            break;
        }
    }
    return true;
}

bool verifyBlocks(BlockSet& set, const Pattern& pattern) {
    std::int32_t index = 0;
    for (const unsigned char* const block : set.blocks) {
        if (block == nullptr) {
            break;
        }
        set.mismatch = verifyBlock(block, static_cast<std::size_t>(set.blockSize), pattern);
        if (set.mismatch) {
            set.mismatch->block = index;
            return false;
        }
        if (hasExpired(set.deadline)) {
            break;
        }
        ++index;
    }
    return true;
}

}  // namespace

bool writeAlternatingBytes(BlockSet& set) {
    return writeBlocks(set, alternatingBytes);
}

bool verifyAlternatingBytes(BlockSet& set) {
    return verifyBlocks(set, alternatingBytes);
}

bool writeSlidingOnes(BlockSet& set) {
    return writeBlocks(set, slidingOnes);
}

bool verifySlidingOnes(BlockSet& set) {
    return verifyBlocks(set, slidingOnes);
}

bool writeZeros(BlockSet& set) {
    return writeBlocks(set, zeros);
}

bool verifyZeros(BlockSet& set) {
    return verifyBlocks(set, zeros);
}

}  // namespace vorn

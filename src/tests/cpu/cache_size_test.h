// The cache size test: the second and third level caches of the processor against the configured
// sizes.
#pragma once

#include <cstdint>
#include <string>

#include "config/settings.h"
#include "report/test_record.h"
#include "vorn/vorn.h"

namespace vorn {

/// Sizes of one cache of each level, as the processor that the thread is on sees it, in KB; 0 for a
/// level that it does not have.
struct CacheSizes {
    bool known = false;  ///< the processor describes its caches
    std::uint64_t l2 = 0;
    std::uint64_t l3 = 0;
};

/// Reads the deterministic cache parameters: CPUID leaf 4, or leaf 0x8000001D on a processor that
/// describes its topology there.
CacheSizes readCacheSizes();

/// A configured size in KB: a number, with a fraction or not, of KB, MB or GB as the letter after
/// it says, else of bytes. 0 when it begins with no number.
std::uint64_t cacheSizeInKb(const std::string& configured);

/// The test function of the catalogue. The second level is looked at when "@L2CacheTest" is
/// "ENABLE"; a level without a configured size is shown and not compared. Without any comparison,
/// or on a processor that does not describe its caches, there is no verdict.
std::string testCacheSize(VORNTestResult& result, const Settings& settings, TestRecord& record,
                          std::string& log);

}  // namespace vorn

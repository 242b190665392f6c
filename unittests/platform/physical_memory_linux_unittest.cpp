#include "platform/linux/physical_memory_linux.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "fakes/temporary_directory.h"
#include "platform/linux/smbios.h"

namespace vorn {
namespace {

using namespace std::string_literals;

std::string littleEndian(std::uint32_t value, int width) {
    std::string bytes;
    for (int index = 0; index < width; ++index) {
        bytes += static_cast<char>(value >> (8 * index));
    }
    return bytes;
}

/// A structure of a formatted area without its header and of texts with their ends.
std::string structure(int type, int handle, const std::string& area,
                      const std::string& texts = "\0"s) {
    return std::string{static_cast<char>(type), static_cast<char>(area.size() + 4)} +
           littleEndian(static_cast<std::uint32_t>(handle), 2) + area + texts + "\0"s;
}

std::string memoryArray(int handle, char use) {
    return structure(16, handle, "\x03"s + use + "\x03"s + std::string(16, '\0'));
}

std::string memoryDevice(std::uint32_t size, std::uint32_t extendedSize = 0, int array = 0x1000) {
    return structure(17, 0x1100,
                     littleEndian(static_cast<std::uint32_t>(array), 2) + std::string(6, '\xFF') +
                         littleEndian(size, 2) + std::string(14, '\x02') +
                         littleEndian(extendedSize, 4) + std::string(8, '\0'),
                     "DIMM 0\0Bank \x11 0\0"s);
}

const std::string biosInformation = structure(0, 0, std::string(20, '\x11'), "Maker\0"s);
const std::string systemArray = memoryArray(0x1000, '\x03');
const std::string endOfTable = structure(127, 0xFFFE, "");

TEST(Smbios, SumsTheDevicesOfSystemMemory) {
    struct Row {
        const char* what;
        std::string table;
        std::optional<std::uint64_t> kilobytes;
    };
    const std::string start = biosInformation + systemArray;
    const std::vector<Row> rows{
        {"two of 8 GiB, one empty socket",
         start + memoryDevice(8192) + memoryDevice(0) + memoryDevice(8192) + endOfTable,
         16U << 20U},
        {"extended size", start + memoryDevice(0x7FFF, 65536) + endOfTable, 64U << 20U},
        {"size in kilobytes", start + memoryDevice(0x8000 | 512) + endOfTable, 512},
        {"an array of another use",
         start + memoryDevice(1024) + memoryArray(0x2000, '\x05') + memoryDevice(16, 0, 0x2000) +
             endOfTable,
         1U << 20U},
        {"no array", biosInformation + memoryDevice(1024) + endOfTable, 1U << 20U},
        {"no end mark", start + memoryDevice(1024), 1U << 20U},
        {"rubbish past the end", start + memoryDevice(1024) + endOfTable + "rubbish", 1U << 20U},
        {"a device of unknown size", start + memoryDevice(1024) + memoryDevice(0xFFFF) + endOfTable,
         std::nullopt},
        {"a device too short for its size", start + structure(17, 1, "\0\x10"s) + endOfTable,
         std::nullopt},
        {"an extended size that is not there",
         start + structure(17, 1, std::string(8, '\0') + "\xFF\x7F"s) + endOfTable, std::nullopt},
        {"only empty sockets", start + memoryDevice(0) + endOfTable, std::nullopt},
        {"no memory", biosInformation + endOfTable, std::nullopt},
        {"cut short", start + memoryDevice(1024) + memoryDevice(1024).substr(0, 30), std::nullopt},
        {"a length below the header's", start + "\x11\x02\0\0\0\0"s, std::nullopt},
        {"nothing", "", std::nullopt},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(installedKilobytesOfSmbios(row.table), row.kilobytes) << row.what;
    }
}

/// A machine described by files.
class LinuxMemoryFiles : public testing::Test {
protected:
    TemporaryDirectory directory_;
    Advice advice_;
    LinuxPhysicalMemory memory_{advice_, "sys", "proc"};
};

TEST_F(LinuxMemoryFiles, AnswerFromTheBestSourceThereIs) {
    const auto write = TemporaryDirectory::write;
    const std::optional<SystemVersion> version = memory_.systemVersion();
    EXPECT_TRUE(version && version->major == 6 && version->minor == 1) << "asks what is installed";
    EXPECT_EQ(memory_.installedKilobytes(), std::nullopt);
    EXPECT_FALSE(memory_.status().has_value());

    const std::string meminfo = "MemTotal:       24684084 kB\nMemFree:        21106552 kB\n";
    write("proc/meminfo", meminfo);
    EXPECT_EQ(memory_.installedKilobytes(), 24684084U);
    EXPECT_EQ(memory_.status()->available, std::uint64_t{21106552} * 1024U);
    write("proc/meminfo", meminfo + "MemAvailable:   23140464 kB\n");
    EXPECT_EQ(memory_.status()->total, std::uint64_t{24684084} * 1024U);
    EXPECT_EQ(memory_.status()->available, std::uint64_t{23140464} * 1024U);

    const std::string blocks = "sys/devices/system/memory/";
    write(blocks + "block_size_bytes", "8000000\n");  // hexadecimal: 128 MiB
    EXPECT_EQ(memory_.installedKilobytes(), 24684084U) << "no block is online";
    write(blocks + "memory0/state", "online\n");
    write(blocks + "memory1/state", "offline\n");
    write(blocks + "memory32/state", "online\n");
    EXPECT_EQ(memory_.installedKilobytes(), 2U * 131072U);

    write("sys/firmware/dmi/tables/DMI", biosInformation + memoryDevice(1024) + endOfTable);
    EXPECT_EQ(memory_.installedKilobytes(), 1U << 20U);
    write("sys/firmware/dmi/tables/DMI", biosInformation);
    EXPECT_EQ(memory_.installedKilobytes(), 2U * 131072U);
}

/// The address sanitizer's runtime answers mlock itself: nothing is locked, nothing is refused.
#ifdef __SANITIZE_ADDRESS__
constexpr bool locksReachTheKernel = false;
#else
constexpr bool locksReachTheKernel = true;
#endif

/// A number of kilobytes that the kernel accounts for this process.
std::uint64_t accounted(const std::string& name) {
    const std::string status = TemporaryDirectory::read("/proc/self/status");
    return std::stoull(status.substr(status.find(name + ":") + name.size() + 1));
}

TEST(LinuxMemoryBlocks, LieOnHugePagesBordersAndGoBackWhole) {
    Advice advice;
    LinuxPhysicalMemory memory(advice);
    memory.setWorkingSet(0);
    const std::uint64_t size = accounted("VmSize");
    const std::uint64_t locked = accounted("VmLck");
    for (const std::size_t bytes : {std::size_t{2} << 20U, std::size_t{4096}, std::size_t{100}}) {
        for (int repeat = 0; repeat < 3; ++repeat) {
            void* const block = memory.allocate(bytes, true);
            ASSERT_NE(block, nullptr);
            EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % (2U << 20U), 0U);
            ASSERT_TRUE(memory.lock(block, bytes));
            if (locksReachTheKernel) {
                EXPECT_GE(accounted("VmLck"), locked + bytes / 1024);
            }
            static_cast<unsigned char*>(block)[bytes - 1] = 1;
            memory.release(block, bytes);
        }
    }
    EXPECT_EQ(accounted("VmLck"), locked);
    EXPECT_LE(accounted("VmSize"), size + 64) << "but for what the test itself took";
    EXPECT_EQ(memory.allocate(std::size_t{1} << 60U, true), nullptr);
    EXPECT_TRUE(advice.lines().empty());
}

TEST(LinuxMemoryBlocks, AreRefusedTheirLockAboveTheLimitWithAdvice) {
    if (!locksReachTheKernel) {
        GTEST_SKIP() << "the sanitizer stands between this test and the kernel";
    }
    rlimit former{};
    ASSERT_EQ(::getrlimit(RLIMIT_MEMLOCK, &former), 0);
    const rlimit low{4096, former.rlim_max};
    ASSERT_EQ(::setrlimit(RLIMIT_MEMLOCK, &low), 0);
    const uid_t user = ::geteuid();
    if (user == 0) {
        ASSERT_EQ(::seteuid(65534), 0);  // the limit does not hold for root
    }
    Advice advice;
    LinuxPhysicalMemory memory(advice);
    constexpr std::size_t size = std::size_t{64} << 10U;
    void* const block = memory.allocate(size, true);
    EXPECT_FALSE(memory.lock(block, size));
    ASSERT_EQ(advice.lines().size(), 1U);
    EXPECT_NE(advice.lines().front().find("4 KiB (RLIMIT_MEMLOCK)"), std::string::npos);
    EXPECT_NE(advice.lines().front().find("ulimit -l"), std::string::npos);

    EXPECT_TRUE(memory.setWorkingSet(1));
    rlimit raised{};
    ::getrlimit(RLIMIT_MEMLOCK, &raised);
    EXPECT_EQ(raised.rlim_cur, former.rlim_max);
    EXPECT_EQ(memory.lock(block, size), former.rlim_max >= size);
    memory.release(block, size);
    if (user == 0) {
        ASSERT_EQ(::seteuid(user), 0);
    }
    ::setrlimit(RLIMIT_MEMLOCK, &former);
}

}  // namespace
}  // namespace vorn

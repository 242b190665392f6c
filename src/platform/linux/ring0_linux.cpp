#include "platform/linux/ring0_linux.h"

#include <fcntl.h>
#include <sched.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <utility>

namespace vorn {

namespace {

/// An open file, closed at the end of its scope.
class File {
public:
    File(const std::string& path, int flags) : descriptor_(::open(path.c_str(), flags)) {}
    ~File() {
        if (descriptor_ >= 0) {
            ::close(descriptor_);
        }
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;

    bool isOpen() const { return descriptor_ >= 0; }
    bool read(void* data, std::size_t size, off_t offset) const {
        return ::pread(descriptor_, data, size, offset) == static_cast<ssize_t>(size);
    }
    bool write(const void* data, std::size_t size, off_t offset) const {
        return ::pwrite(descriptor_, data, size, offset) == static_cast<ssize_t>(size);
    }

private:
    int descriptor_;
};

/// The two halves of a register as the MSR device transfers them: EAX first.
struct MsrHalves {
    std::uint32_t low = 0;
    std::uint32_t high = 0;
};

// A configuration file that gives only the standard header ends here for callers without
// CAP_SYS_ADMIN.
constexpr std::uint32_t pciHeaderSize = 64;

}  // namespace

LinuxRing0Library::LinuxRing0Library(Advice& advice, std::string deviceRoot, std::string sysfsRoot)
    : advice_(advice), deviceRoot_(std::move(deviceRoot)), sysfsRoot_(std::move(sysfsRoot)) {}

std::uint32_t LinuxRing0Library::initialize() {
    status_ = probe();
    return status_ == ready ? 1 : 0;
}

std::uint32_t LinuxRing0Library::status() {
    return status_;
}

void LinuxRing0Library::deinitialize() {
    status_ = notInitialized;
}

LinuxRing0Library::Status LinuxRing0Library::probe() {
    const File msr(msrPath(), O_RDONLY | O_CLOEXEC);
    if (!msr.isOpen()) {
        const int error = errno;
        if (error == EACCES) {
            advice_.add("The MSR device " + msrPath() +
                        " may not be opened by this user: run as root.");
            return msrNotPermitted;
        }
        if (error == EPERM) {
            advice_.add("The kernel refuses the MSR device " + msrPath() +
                        " to this process: give it CAP_SYS_RAWIO, and disable kernel lockdown "
                        "(Secure Boot) if it is in force.");
            return msrNotPermitted;
        }
        advice_.add("There is no MSR device " + msrPath() +
                    ": load the kernel module with \"modprobe msr\".");
        return noMsrDevice;
    }
    if (::access((sysfsRoot_ + "/bus/pci/devices").c_str(), R_OK | X_OK) != 0) {
        advice_.add("The PCI configuration space cannot be read below " + sysfsRoot_ +
                    "/bus/pci/devices: mount sysfs.");
        return pciNotReadable;
    }
    return ready;
}

std::string LinuxRing0Library::msrPath() const {
    const int processor = ::sched_getcpu();
    return deviceRoot_ + "/cpu/" + std::to_string(processor < 0 ? 0 : processor) + "/msr";
}

std::uint32_t LinuxRing0Library::readMsr(std::uint32_t index, std::uint32_t& low,
                                         std::uint32_t& high) {
    if (status_ != ready) {
        return 0;
    }
    const File msr(msrPath(), O_RDONLY | O_CLOEXEC);
    MsrHalves halves;
    if (!msr.isOpen() || !msr.read(&halves, sizeof halves, static_cast<off_t>(index))) {
        return 0;
    }
    low = halves.low;
    high = halves.high;
    return 1;
}

std::uint32_t LinuxRing0Library::writeMsr(std::uint32_t index, std::uint32_t low,
                                          std::uint32_t high) {
    if (status_ != ready) {
        return 0;
    }
    errno = 0;
    const File msr(msrPath(), O_WRONLY | O_CLOEXEC);
    const MsrHalves halves{low, high};
    if (msr.isOpen() && msr.write(&halves, sizeof halves, static_cast<off_t>(index))) {
        return 1;
    }
    if (errno == EACCES) {
        advice_.add("The MSR device " + msrPath() +
                    " may not be written by this user: run as root.");
    } else if (errno == EPERM) {
        advice_.add(
            "The kernel refuses writes to model-specific registers: boot with "
            "\"msr.allow_writes=on\", and disable kernel lockdown (Secure Boot) if it is in "
            "force.");
    } else {
        advice_.add("A write to a model-specific register failed (" +
                    std::string(std::strerror(errno)) +
                    "): the processor, or the hypervisor that it runs under, may not take it.");
    }
    return 0;
}

bool LinuxRing0Library::readPci(std::uint32_t address, std::uint32_t offset, void* value,
                                std::size_t size) {
    if (status_ != ready) {
        return false;
    }
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), "0000:%02x:%02x.%x", (address >> 8U) & 0xFFU,
                  (address >> 3U) & 0x1FU, address & 0x7U);
    const std::string function = sysfsRoot_ + "/bus/pci/devices/" + name.data();
    std::error_code ignored;
    if (!std::filesystem::exists(function, ignored)) {
        // No function answers: the bus returns all ones, which is not a refused read.
        std::memset(value, 0xFF, size);
        return true;
    }
    const File config(function + "/config", O_RDONLY | O_CLOEXEC);
    if (config.isOpen() && config.read(value, size, static_cast<off_t>(offset))) {
        return true;
    }
    if (offset + size > pciHeaderSize) {
        advice_.add(
            "The PCI configuration space is cut to its first 64 bytes for this user: run "
            "as root.");
    } else {
        advice_.add("The PCI configuration of " + std::string(name.data()) +
                    " may not be read by this user: run as root.");
    }
    return false;
}

std::uint8_t LinuxRing0Library::readPciConfigByte(std::uint32_t address, std::uint32_t offset) {
    std::uint8_t value = 0xFF;
    readPci(address, offset, &value, sizeof value);
    return value;
}

std::uint16_t LinuxRing0Library::readPciConfigWord(std::uint32_t address, std::uint32_t offset) {
    std::uint16_t value = 0xFFFF;
    readPci(address, offset, &value, sizeof value);
    return value;
}

std::uint32_t LinuxRing0Library::readPciConfigDword(std::uint32_t address, std::uint32_t offset) {
    std::uint32_t value = 0xFFFFFFFF;
    readPci(address, offset, &value, sizeof value);
    return value;
}

std::uint32_t LinuxRing0Library::readPciConfigWordChecked(std::uint32_t address,
                                                          std::uint32_t offset,
                                                          std::uint16_t& value) {
    return readPci(address, offset, &value, sizeof value) ? 1 : 0;
}

std::uint32_t LinuxRing0Library::readPciConfigDwordChecked(std::uint32_t address,
                                                           std::uint32_t offset,
                                                           std::uint32_t& value) {
    return readPci(address, offset, &value, sizeof value) ? 1 : 0;
}

}  // namespace vorn

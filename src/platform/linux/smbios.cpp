#include "platform/linux/smbios.h"

#include <cstddef>
#include <map>

namespace vorn {

namespace {

// SMBIOS (DMTF DSP0134): structure types, offsets and values.
constexpr std::size_t smbiosHeaderSize = 4;  // type, length, handle
constexpr std::size_t handleOffset = 0x02;
constexpr unsigned smbiosEndOfTable = 127;
constexpr unsigned smbiosMemoryArray = 16;
constexpr std::size_t arrayUseOffset = 0x05;
constexpr unsigned arrayUseSystemMemory = 0x03;
constexpr unsigned smbiosMemoryDevice = 17;
constexpr std::size_t deviceArrayHandleOffset = 0x04;
constexpr std::size_t deviceSizeOffset = 0x0C;
constexpr std::size_t deviceExtendedSizeOffset = 0x1C;
constexpr std::uint32_t deviceSizeUnknown = 0xFFFF;
constexpr std::uint32_t deviceSizeExtended = 0x7FFF;
constexpr std::uint32_t deviceSizeInKilobytes = 0x8000;  // flag; else megabytes
constexpr std::uint32_t deviceSizeMask = 0x7FFF;
constexpr std::uint32_t deviceExtendedSizeMask = 0x7FFFFFFF;

/// The formatted area of one structure: all but the texts that follow it.
using Structure = std::string_view;

unsigned byteAt(Structure structure, std::size_t offset) {
    return static_cast<unsigned char>(structure[offset]);
}

/// A little-endian field; nothing when the structure is of an older, shorter form.
std::optional<std::uint32_t> field(Structure structure, std::size_t offset, std::size_t width) {
    if (offset + width > structure.size()) {
        return std::nullopt;
    }
    std::uint32_t value = 0;
    for (std::size_t index = 0; index < width; ++index) {
        value |= byteAt(structure, offset + index) << (8U * index);
    }
    return value;
}

/// Takes the first structure off the table; nothing at its end or where it is cut short.
std::optional<Structure> takeStructure(std::string_view& table) {
    if (table.size() < smbiosHeaderSize) {
        return std::nullopt;
    }
    const std::size_t length = byteAt(table, 1);
    const std::size_t end = table.find(std::string_view("\0\0", 2), length);
    if (length < smbiosHeaderSize || end == std::string_view::npos) {
        return std::nullopt;
    }
    const Structure structure = table.substr(0, length);
    table.remove_prefix(end + 2);
    return structure;
}

/// Kilobytes of one memory device, 0 for an empty socket; nothing when it does not know its size.
std::optional<std::uint64_t> deviceKilobytes(Structure device) {
    const std::optional<std::uint32_t> size = field(device, deviceSizeOffset, 2);
    if (!size || *size == deviceSizeUnknown) {
        return std::nullopt;
    }
    if (*size == deviceSizeExtended) {
        const std::optional<std::uint32_t> megabytes = field(device, deviceExtendedSizeOffset, 4);
        if (!megabytes) {
            return std::nullopt;
        }
        return std::uint64_t{*megabytes & deviceExtendedSizeMask} << 10U;
    }
    const std::uint64_t value = *size & deviceSizeMask;
    return (*size & deviceSizeInKilobytes) != 0 ? value : value << 10U;
}

}  // namespace

std::optional<std::uint64_t> installedKilobytesOfSmbios(std::string_view table) {
    std::map<std::uint32_t, unsigned> arrayUses;  // by the handle of the array
    std::map<std::uint32_t, std::uint64_t> arrayKilobytes;
    while (!table.empty()) {
        const std::optional<Structure> structure = takeStructure(table);
        if (!structure) {
            return std::nullopt;
        }
        const unsigned type = byteAt(*structure, 0);
        if (type == smbiosEndOfTable) {
            break;
        }
        if (type == smbiosMemoryArray) {
            const std::uint32_t handle = *field(*structure, handleOffset, 2);
            arrayUses[handle] = field(*structure, arrayUseOffset, 1).value_or(arrayUseSystemMemory);
        } else if (type == smbiosMemoryDevice) {
            const std::optional<std::uint64_t> kilobytes = deviceKilobytes(*structure);
            if (!kilobytes) {
                return std::nullopt;
            }
            arrayKilobytes[*field(*structure, deviceArrayHandleOffset, 2)] += *kilobytes;
        }
    }
    std::uint64_t sum = 0;
    for (const auto& [handle, kilobytes] : arrayKilobytes) {
        const auto use = arrayUses.find(handle);
        if (use == arrayUses.end() || use->second == arrayUseSystemMemory) {
            sum += kilobytes;
        }
    }
    return sum == 0 ? std::nullopt : std::optional(sum);
}

}  // namespace vorn

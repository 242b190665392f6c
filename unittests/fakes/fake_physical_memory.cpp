#include "fakes/fake_physical_memory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <new>

namespace vorn {

namespace {

constexpr std::align_val_t pageAlignment{4096};

}  // namespace

FakePhysicalMemory::~FakePhysicalMemory() {
    for (const Block& block : blocks_) {
        ADD_FAILURE() << "block " << block.number << " was not released";
        ::operator delete(block.start, pageAlignment);
    }
}

std::vector<unsigned char*> FakePhysicalMemory::held() const {
    std::vector<unsigned char*> starts;
    for (const Block& block : blocks_) {
        starts.push_back(static_cast<unsigned char*>(block.start));
    }
    return starts;
}

std::vector<FakePhysicalMemory::Block>::iterator FakePhysicalMemory::find(const void* block,
                                                                          std::size_t size,
                                                                          const char* what) {
    const auto found =
        std::find_if(blocks_.begin(), blocks_.end(),
                     [block](const Block& candidate) { return candidate.start == block; });
    if (found == blocks_.end()) {
        ADD_FAILURE() << what << " of a block that is not allocated";
    } else {
        EXPECT_EQ(size, found->size) << what << " of block " << found->number;
        calls.push_back(what + (" " + std::to_string(found->number)));
    }
    return found;
}

void* FakePhysicalMemory::allocate(std::size_t size, bool uncached) {
    calls.push_back("allocate " + std::to_string(size) + (uncached ? " uncached" : ""));
    if (grantedBlocks == 0) {
        return nullptr;
    }
    grantedBlocks -= grantedBlocks == unlimited ? 0 : 1;
    void* const start = ::operator new(size, pageAlignment);
    blocks_.push_back({start, size, nextNumber_++, false});
    return start;
}

bool FakePhysicalMemory::lock(void* block, std::size_t size) {
    const auto found = find(block, size, "lock");
    if (found == blocks_.end() || grantedLocks == 0) {
        return false;
    }
    EXPECT_FALSE(found->locked) << "block " << found->number << " is locked already";
    found->locked = true;
    grantedLocks -= grantedLocks == unlimited ? 0 : 1;
    return true;
}

void FakePhysicalMemory::release(void* block, std::size_t size) {
    const auto found = find(block, size, "release");
    if (found != blocks_.end()) {
        ::operator delete(found->start, pageAlignment);
        blocks_.erase(found);
    }
}

bool FakePhysicalMemory::setWorkingSet(std::size_t bytes) {
    calls.push_back("working set " + std::to_string(bytes));
    return false;  // whoever asks goes on without it
}

}  // namespace vorn

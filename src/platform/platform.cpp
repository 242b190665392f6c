#include "platform/platform.h"

namespace vorn {

namespace {

Platform*& replacementPlatform() {
    static Platform* replacement = nullptr;
    return replacement;
}

}  // namespace

Platform& platform() {
    Platform* replacement = replacementPlatform();
    return replacement != nullptr ? *replacement : nativePlatform();
}

ScopedPlatform::ScopedPlatform(Platform& replacement) : previous_(replacementPlatform()) {
    replacementPlatform() = &replacement;
}

ScopedPlatform::~ScopedPlatform() {
    replacementPlatform() = previous_;
}

}  // namespace vorn

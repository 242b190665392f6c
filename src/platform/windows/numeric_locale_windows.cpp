#include <clocale>
#include <string>

#include "platform/numeric_locale.h"

namespace vorn {

struct NumericLocale::Former {
    int threadMode;
    std::string name;
};

NumericLocale::NumericLocale()
    : former_(std::make_unique<Former>(Former{_configthreadlocale(_ENABLE_PER_THREAD_LOCALE),
                                              std::setlocale(LC_NUMERIC, nullptr)})) {
    std::setlocale(LC_NUMERIC, "C");
}

NumericLocale::~NumericLocale() {
    std::setlocale(LC_NUMERIC, former_->name.c_str());
    _configthreadlocale(former_->threadMode);
}

}  // namespace vorn

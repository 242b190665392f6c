#include <clocale>

#include "platform/numeric_locale.h"

namespace vorn {

struct NumericLocale::Former {
    locale_t locale;
};

// The whole C locale is always there; one of its numbers alone would have to be made each time.
NumericLocale::NumericLocale()
    : former_(
          std::make_unique<Former>(Former{::uselocale(::newlocale(LC_ALL_MASK, "C", nullptr))})) {}

NumericLocale::~NumericLocale() {
    ::uselocale(former_->locale);
}

}  // namespace vorn

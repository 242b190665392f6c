// The locale of a host whose language writes a comma in fractions and points between thousands.
#pragma once

#include <clocale>
#include <locale>
#include <stdexcept>
#include <string>

namespace vorn {

/// In force in the whole process, for C and for C++, while it lives.
class CommaLocale {
public:
    CommaLocale() {
        if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr &&
            std::setlocale(LC_ALL, "German_Germany.1252") == nullptr) {
            throw std::runtime_error("there is no locale with a decimal comma");
        }
        std::locale::global(std::locale(std::locale::classic(), new Punctuation));
    }
    ~CommaLocale() {
        std::locale::global(std::locale::classic());
        std::setlocale(LC_ALL, "C");
    }
    CommaLocale(const CommaLocale&) = delete;
    CommaLocale& operator=(const CommaLocale&) = delete;

private:
    struct Punctuation : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
};

}  // namespace vorn

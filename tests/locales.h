#pragma once

#include <gtest/gtest.h>

#include <clocale>
#include <string>

/// Sets a locale of the build folder for one scope and puts the old one back.
class LocaleScope {
public:
    explicit LocaleScope(const char* name) : old_(std::setlocale(LC_ALL, nullptr)) {
        isSet_ = std::setlocale(LC_ALL, name) != nullptr;
        EXPECT_TRUE(isSet_) << "no locale " << name << "; is LOCPATH set?";
    }
    ~LocaleScope() { std::setlocale(LC_ALL, old_.c_str()); }
    LocaleScope(const LocaleScope&) = delete;
    LocaleScope& operator=(const LocaleScope&) = delete;

private:
    std::string old_;
    bool isSet_;
};

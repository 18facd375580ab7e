#include "print/estimator.h"
#include "print/print.h"

namespace platform {

namespace {

template <class Unit>
int estimate_format(const Unit* format, va_list arguments) {
    ProcessPage page;
    Estimator<Unit> estimator;
    walk_format(format, arguments, page, estimator);
    return estimator.Result();
}

}  // namespace

int estimate(const char* format, va_list arguments) {
    return estimate_format(format, arguments);
}

int estimate(const char16_t* format, va_list arguments) {
    return estimate_format(format, arguments);
}

}  // namespace platform

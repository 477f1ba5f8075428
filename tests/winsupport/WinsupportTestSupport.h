#pragma once
// Helpers of the Windows support layer's tests.
#include <gtest/gtest.h>

#include <functional>

#include "fixtures/ErrorOf.h"

namespace winsupporttest {

using fixtures::ErrorOf;

// The failure an action must raise.
inline RuntimeError Raised(const std::function<void()>& action) {
    RuntimeError e = ErrorOf(action);
    if (e.Number == 0) ADD_FAILURE() << "no failure was raised";
    return e;
}

}  // namespace winsupporttest

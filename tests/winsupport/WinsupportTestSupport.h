#pragma once
// Helpers of the Windows support layer's tests.
#include <gtest/gtest.h>

#include <functional>

#include "platform/Runtime.h"

namespace winsupporttest {

// The failure an action raised; number 0 when it raised none.
inline RuntimeError FailureOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const RuntimeError& e) {
        return e;
    }
    return RuntimeError(0, "", "");
}

// The failure an action must raise.
inline RuntimeError Raised(const std::function<void()>& action) {
    RuntimeError e = FailureOf(action);
    if (e.Number == 0) ADD_FAILURE() << "no failure was raised";
    return e;
}

}  // namespace winsupporttest

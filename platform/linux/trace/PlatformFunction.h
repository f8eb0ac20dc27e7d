#pragma once

/// Declares the frame of a platform function: what happens before and after its body.

#include "PlatformCall.h"

#include <Carbon/MacErrors.h>
#include <MacTypes.h>

#include <new>
#include <type_traits>
#include <utility>

namespace macplatform {

/// The arguments of a call in readable notation.
using Texts = std::vector<std::string>;

/// What a function returns if it fails: the result code, or else null or false.
template <typename Result>
struct Failure {
    static constexpr bool kIsPossible = true;
    static constexpr long kNoMemory = memFullErr;
    static constexpr const char* kText = nullptr; ///< The result in the call log, if not that of the value.
    Result operator()(long code) const {
        if constexpr (std::is_same_v<Result, OSErr> || std::is_same_v<Result, OSStatus>) {
            return static_cast<Result>(code);
        } else {
            return Result();
        }
    }
};

/// For a function that cannot fail. A fault for such a function stays pending.
template <typename Result>
struct NoFailure : Failure<Result> {
    static constexpr bool kIsPossible = false;
};

/// Makes a platform call: records the texts that `show` returns as its arguments, runs `body` and records the
/// result. `body` may take the PlatformCall. A pending fault makes the call fail before `body` runs. The call
/// also fails if memory runs out in `body`. Other exceptions pass through.
template <template <typename> class IfFailed = Failure, typename Show, typename Body>
auto MakePlatformCall(const char* name, Show show, Body body) {
    PlatformCall call(name);
    const auto perform = [&] {
        if constexpr (std::is_invocable_v<Body&, PlatformCall&>) {
            return body(call);
        } else {
            return body();
        }
    };
    using Result = decltype(perform());
    using Failed = IfFailed<Result>;
    const auto fail = [&](long code) -> Result {
        if constexpr (Failed::kText != nullptr) return call.Result(Failed()(code), Failed::kText);
        return Failed()(code);
    };
    const auto result = [&]() -> Result {
        call.Record(show);
        if constexpr (Failed::kIsPossible) {
            if (const auto code = call.ConsumeFault()) return fail(*code);
        }
        try {
            return perform();
        } catch (const std::bad_alloc&) {
            call.SetNote("out of memory");
            return fail(Failed::kNoMemory);
        }
    };
    if constexpr (std::is_void_v<Result>) {
        result();
    } else {
        return call.Result(result());
    }
}

/// Makes a call that has no arguments and cannot fail.
template <typename Body>
auto MakePlatformCall(const char* name, Body body) {
    return MakePlatformCall<NoFailure>(
        name, [] { return Texts(); }, std::move(body));
}

} // namespace macplatform

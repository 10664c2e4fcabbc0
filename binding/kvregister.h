/** \file
 * Registration of a library function's test, and the timing functions that are generated for it.
 *
 * A test unit writes, for each function, what one call is,
 *
 *     static int tcall_zorsScale_32f_I() { return zorsScale_32f_I(s_scale, s_data.p32f, s_len); }
 *
 * and registers it:
 *
 *     KV_REG(TimApply, zorsScale_32f_I)
 *
 * A function that consumes its input (KV_REG_I) also has what restores it, named tinit_ and the function's
 * name, which returns 0. The loop and the statistic timing functions are instances of the templates below.
 */
#ifndef KVREGISTER_H
#define KVREGISTER_H

#include "framework/bxtestlist.h"
#include "kvtest.h"
#include "system/bxclock.h"

#include <limits>
#include <type_traits>
#include <utility>

namespace kv {

/** A name as a template argument, so that timing functions know theirs without taking part in the call. */
template <int size>
struct FunctionName {
    constexpr FunctionName(const char (&name)[size]) {
        for (int i = 0; i < size; ++i)
            text[i] = name[i];
    }
    char text[size]{};
};

/** What a call returned as a status: false is an error; what no int can hold is as far as one goes. */
template <class Returned>
constexpr int statusCode(Returned returned) {
    if constexpr (std::is_same_v<Returned, bool>)
        return returned ? 0 : -1;
    else if constexpr (std::is_enum_v<Returned>)
        return statusCode(static_cast<std::underlying_type_t<Returned>>(returned));
    else if (std::in_range<int>(returned))
        return static_cast<int>(returned);
    else
        return std::cmp_less(returned, 0) ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
}

/**
 * The call of a function, which returns its status, and what comes before each: `init` is null where nothing
 * does.
 */
template <auto call, int (*init)()>
struct Timed {
    /** The timed region of the loop method; returns the status of the last call. Everything is inlined. */
    [[gnu::flatten, gnu::noinline]] static int loop(int count, unsigned long long& ticks) {
        auto status = once();
        const unsigned long long start = zor_get_cpu_counter();
        for (int i = 0; i < count; ++i)
            status = once();
        const unsigned long long stop = zor_get_cpu_counter();
        ticks = stop - start;
        return statusCode(status);
    }

    /**
     * The statistic method: each call timed by itself, the first one untimed, until `calls` calls and
     * `clocks` clocks are reached or a call fails. \param calls, clocks on entry the least, on return what
     * was done \return the last status that was not 0
     */
    [[gnu::flatten, gnu::noinline]] static int stat(int& calls, long long& clocks) {
        int status = 0;
        int i = -1;
        long long total = 0;
        for (;; ++i) {
            if (i == 0)
                total = 0;
            if (i >= calls && total >= clocks)
                break;
            if constexpr (init != nullptr)
                init();
            const unsigned long long start = zor_get_cpu_counter();
            const auto returned = call();
            const unsigned long long stop = zor_get_cpu_counter();
            const int one = statusCode(returned);
            total += bxCpuTicker::toClocks(stop - start);
            status = one != 0 ? one : status;
            if (one < 0)
                break;
        }
        calls = i;
        clocks = total;
        return status;
    }

  private:
    static auto once() {
        if constexpr (init != nullptr)
            init();
        return call();
    }
};

/** Loop timing function: a warm-up call, then `count` calls between two reads of the counter. */
template <FunctionName name, int (*call)(), int (*init)()>
bxResult timeLoop(int count, long long* clocks) {
    unsigned long long ticks = 0;
    const int status = Timed<call, init>::loop(count, ticks);
    *clocks = bxCpuTicker::toClocks(ticks);
    return kvTest::checkStatus(status, name.text);
}

/** Statistic timing function. */
template <FunctionName name, int (*call)(), int (*init)()>
bxResult timeStat(int* calls, long long* clocks) {
    return kvTest::checkStatus(Timed<call, init>::stat(*calls, *clocks), name.text);
}

/**
 * Creates the test of a function and registers it.
 * \param path the unit's own path
 * \param info the registration text, "<class>//<form>"
 */
template <class Test, FunctionName name, int (*call)(), int (*init)() = nullptr>
bool registerTest(const char* path, const char* info) {
    return bxRegTest(new Test(call, init, timeLoop<name, call, init>, timeStat<name, call, init>, name.text,
                              path, info)) != 0;
}

} // namespace kv

/** A function that can be called again and again with the same arguments. */
#define KV_REG(test, func)                                                                                   \
    [[maybe_unused]] static const bool reg_##func =                                                          \
        kv::registerTest<test, #func, tcall_##func>(__FILE__, #test "//KV_REG");

/** A function that consumes what `tinit_` restores before every call. */
#define KV_REG_I(test, func)                                                                                 \
    [[maybe_unused]] static const bool reg_##func =                                                          \
        kv::registerTest<test, #func, tcall_##func, tinit_##func>(__FILE__, #test "//KV_REG_I");

/** A function timed through a wrapper (named x_...) that `tcall_` calls. */
#define KV_REG_X(test, func)                                                                                 \
    [[maybe_unused]] static const bool reg_##func =                                                          \
        kv::registerTest<test, #func, tcall_##func>(__FILE__, #test "//KV_REG_X");

#endif

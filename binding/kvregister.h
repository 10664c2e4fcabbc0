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

/** The call of a function and what comes before each: `init` is null where nothing does. */
template <int (*call)(), int (*init)()>
struct Timed {
    /** The timed region of the loop method; returns the status of the last call. Everything is inlined. */
    [[gnu::flatten, gnu::noinline]] static int loop(int count, unsigned long long& ticks) {
        int status = once();
        const unsigned long long start = zor_get_cpu_counter();
        for (int i = 0; i < count; ++i)
            status = once();
        const unsigned long long stop = zor_get_cpu_counter();
        ticks = stop - start;
        return status;
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
            const int one = call();
            const unsigned long long stop = zor_get_cpu_counter();
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
    static int once() {
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

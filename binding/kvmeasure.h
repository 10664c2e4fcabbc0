/** \file
 * The short form of a test: one statement for each function of a library of one's own.
 *
 *     #include "kv.h"
 *     #include "filter.h"
 *
 *     static const kvMeasure fir("firExecute", kvParm("Taps", 8, 32), kvSize("Length", 64, 1024),
 *         [](kvData& data, int taps, int length) {
 *             float *h = data.random(taps), *x = data.random(length), *y = data.output(length);
 *             auto q = data.state(firCreate(h, taps), firDestroy);
 *             return [=] { return firExecute(q, x, y, length); };
 *         });
 *
 * It says the function's name, the parameters with their values (kvmeasureparm.h), and a set-up. For every
 * combination of values the harness calls the set-up with a `kvData` and a value for each parameter, in their
 * order; the set-up makes the data (kvmeasuredata.h) and returns the call, which is then made again and
 * again. The call captures by value, [=]: the set-up's own variables are gone by then. It is inlined into the
 * timed loop, as bare as what KV_REG registers.
 *
 * A call may return
 * - nothing;
 * - an integer or enumeration: the status, 0 where all is well. Negative values are errors and positive ones
 *   warnings, unless a word says something else (`kvFailure`);
 * - a bool: false is an error;
 * - anything else: a value that counts as used, so that the compiler cannot leave the call out.
 *
 * An error ends the test with FUNCFAIL, a warning gives FUNCWRN.
 */
#ifndef KVMEASURE_H
#define KVMEASURE_H

#include "framework/bxregister.h"
#include "kvmeasuredata.h"
#include "kvmeasureparm.h"
#include "kvregister.h"

#include <cstdint>
#include <new>
#include <optional>
#include <tuple>

/**
 * What a set-up returns for a function that changes what it works on: `before` restores it before each call.
 * Its time is in the figures of all methods but Statistic.
 *
 *     return kvBefore([=] { std::memcpy(y, x, bytes); }, [=] { sortInPlace(y, length); });
 */
template <class Before, class Call>
struct kvBefore {
    kvBefore(Before restore, Call timed) : before(std::move(restore)), call(std::move(timed)) {}

    Before before;
    Call call;
};

/** The text that a listing shows as the description of a test. */
struct kvAbout {
    explicit kvAbout(const char* words) : text(words) {}
    const char* text;
};

namespace kv {

/** Whatever a call returned, the compiler takes it for used; no instruction comes of it. */
template <class T>
[[gnu::always_inline]] inline void used(const T& value) {
    if constexpr (std::is_scalar_v<T>)
        __asm__ volatile("" : : "X"(value) : "memory");
    else
        __asm__ volatile("" : : "m"(value) : "memory");
}

/** Makes a call and gives what can be a status of it. */
template <class Call>
[[gnu::always_inline]] inline auto statusOfCall(Call& call) {
    using Returned = std::decay_t<decltype(call())>;
    if constexpr (std::is_void_v<Returned>) {
        call();
        __asm__ volatile("" : : : "memory");
        return 0;
    } else {
        const Returned returned = call();
        used(returned);
        if constexpr (std::is_integral_v<Returned> || std::is_enum_v<Returned>)
            return returned;
        else
            return 0;
    }
}

/** A place for what a set-up returned: at a fixed address, so that the timed loop reads it as it reads
 * statics. */
template <class T>
class Place {
  public:
    template <class Make>
    void fill(Make make) {
        clear();
        ::new (static_cast<void*>(m_bytes)) T(make());
        m_full = true;
    }
    void clear() {
        if (std::exchange(m_full, false))
            get().~T();
    }
    T& get() { return *std::launder(reinterpret_cast<T*>(m_bytes)); }
    const unsigned char* bytes() const { return m_bytes; }

  private:
    alignas(T) unsigned char m_bytes[sizeof(T)]{};
    bool m_full = false;
};

/** What the timing functions of a statement call; `Work` is what its set-up returns. */
template <class Work>
struct Calls {
    static inline constinit Place<Work> place{};
    static constexpr int (*before)() = nullptr;
    static auto call() { return statusOfCall(place.get()); }
};

template <class Before, class Call>
struct Calls<kvBefore<Before, Call>> {
    static inline constinit Place<kvBefore<Before, Call>> place{};
    static int before() {
        place.get().before();
        return 0;
    }
    static auto call() { return statusOfCall(place.get().call); }
};

/** What does not depend on the types of a statement. */
class MeasuredTest : public kvTest {
  public:
    bool canStart() override;
    bool initData() override;
    bool flushData() override;
    double getDivisor() override;
    bxString getUnit() override;
    double getFlops() override { return m_data.operations(); }
    bool isFloatFunction() override { return bxTest::isFloatFunction(); } // NOLINT: the name tells no type
    bxString regInfo() override;

  protected:
    MeasuredTest(bxFuncCall call, bxFuncInit before, bxFuncLoop loop, bxFuncStat stat, const char* function,
                 const char* file, const bxString& about, kvFailure failure);

    /** Fresh parameters with the values of the statement. */
    virtual std::vector<AnyParm*> makeParms() = 0;
    /** Lets the set-up make data and call; the bytes of what it returned. */
    virtual std::pair<const unsigned char*, std::size_t> setUp(kvData& data) = 0;
    virtual void dropCall() = 0;

  private:
    bool refersToSetUp();
    std::vector<std::uintptr_t> makeWork();
    std::vector<std::uintptr_t> makeWorkElsewhere();

    kvData m_data;
    const bxIterator<int>* m_size = nullptr; /**< the parameter that says how many elements there are */
};

/** The test of a statement. */
template <class SetUp, class... Said>
class Measured : public MeasuredTest {
    using Work = std::invoke_result_t<SetUp&, kvData&, ValueOf<Said>...>;
    using Functions = Calls<Work>;

  public:
    Measured(const char* function, const char* file, const bxString& about, kvFailure failure, SetUp setUp,
             std::tuple<Said...> said)
        : MeasuredTest(callOnce, Functions::before, loop, stat, function, file, about,
                       returnsBool ? kvNonzeroFails : failure),
          m_setUp(std::move(setUp)), m_said(std::move(said)) {}
    ~Measured() override { dropCall(); }

  private:
    static constexpr bool returnsBool = std::is_same_v<decltype(Functions::call()), bool>;

    static int callOnce() { return statusCode(Functions::call()); }
    static bxResult loop(int count, long long* clocks) {
        unsigned long long ticks = 0;
        const int status = Timed<&Functions::call, Functions::before>::loop(count, ticks);
        *clocks = bxCpuTicker::toClocks(ticks);
        return s_test->checkStatus(status);
    }
    static bxResult stat(int* calls, long long* clocks) {
        return s_test->checkStatus(Timed<&Functions::call, Functions::before>::stat(*calls, *clocks));
    }

    std::vector<AnyParm*> makeParms() override {
        return [this]<std::size_t... i>(std::index_sequence<i...>) {
            return std::vector<AnyParm*>{&std::get<i>(m_live).emplace(std::get<i>(m_said))...};
        }
        (std::index_sequence_for<Said...>());
    }
    // A set-up says int, unsigned, float or double as its library does: its parameters' values fit them.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wsign-conversion"
#pragma GCC diagnostic ignored "-Wfloat-conversion"
    std::pair<const unsigned char*, std::size_t> setUp(kvData& data) override {
        s_test = this;
        Functions::place.fill([&] {
            return std::apply([&](auto&... live) { return m_setUp(data, live->value()...); }, m_live);
        });
        return {Functions::place.bytes(), sizeof(Work)};
    }
#pragma GCC diagnostic pop
    void dropCall() override {
        Functions::place.clear();
    }

    static inline Measured* s_test = nullptr; /**< the one of this type that has its data */
    SetUp m_setUp;
    std::tuple<Said...> m_said;
    std::tuple<std::optional<LiveParm<Said>>...> m_live;
};

/** The name of a function and, unseen, the file of the statement. */
struct NameHere {
    NameHere(const char* function, const char* here = __builtin_FILE()) : name(function), file(here) {}
    const char* name;
    const char* file;
};

/** The arguments of a statement behind the name, sorted by what they are. */
template <class Said, class SetUp>
struct Statement {
    Said said;
    SetUp setUp;
    bxString about{};
    kvFailure failure = kvAsLibrary;
};

template <class... Before, class Next, class... Rest>
auto sorted(std::tuple<Before...> said, bxString about, kvFailure failure, Next next, Rest... rest) {
    if constexpr (sizeof...(rest) == 0)
        return Statement<std::tuple<Before...>, Next>{std::move(said), std::move(next), about, failure};
    else if constexpr (std::is_same_v<Next, kvFailure>)
        return sorted(std::move(said), about, next, std::move(rest)...);
    else if constexpr (std::is_same_v<Next, kvAbout>)
        return sorted(std::move(said), next.text, failure, std::move(rest)...);
    else {
        static_assert(isParm<Next>, "between name and set-up stand parameters (kvParm, kvSize, kvRange, "
                                    "kvNames), a word of kvFailure and kvAbout");
        return sorted(std::tuple_cat(std::move(said), std::make_tuple(std::move(next))), about, failure,
                      std::move(rest)...);
    }
}

template <class SetUp, class... Said>
void registerMeasured(const NameHere& here, Statement<std::tuple<Said...>, SetUp> statement) {
    static_assert(std::is_invocable_v<SetUp&, kvData&, ValueOf<Said>...>,
                  "the set-up takes a kvData& and then a value for each parameter, in their order");
    bxRegQKeys();
    bxRegTest(new Measured<SetUp, Said...>(here.name, here.file, statement.about, statement.failure,
                                           std::move(statement.setUp), std::move(statement.said)));
}

} // namespace kv

/**
 * A test of one function, which registers itself (see the top of this file). Behind the name come, in any
 * order, parameters, one word of `kvFailure` where this function differs from the library, and `kvAbout`; the
 * last argument is the set-up. Without parameters there is one combination.
 *
 * -f selects by the function's name, -t by the name of the source file without its extension.
 */
class kvMeasure {
  public:
    template <class... Arguments>
    kvMeasure(kv::NameHere name, Arguments... arguments) {
        kv::registerMeasured(name, kv::sorted(std::tuple<>(), {}, kvAsLibrary, std::move(arguments)...));
    }
};

#endif

// The program of the comparisons that go wrong: a handful of functions, one of which does what the
// environment's PAIR_TEST says.
#include "zorcore.h"

#include "kv.h"

#include <csignal>
#include <cstdlib>
#include <string_view>
#include <unistd.h>

namespace {

bool wants(std::string_view deed) {
    const char* const deeds = std::getenv("PAIR_TEST");
    return deeds && deed == deeds;
}

bxIterator<int>& s_len = []() -> bxIterator<int>& {
    auto* const len = new bxIterator<int>(16, "Len", "");
    len->add(16);
    len->add(64);
    return *len;
}();
kvVector s_src(kv32f), s_dst(kv32f), s_counts(kv16s), s_state(kv8u);

/** Calls since the data were made. */
int s_calls = 0;

class TimSide : public kvTest {
  public:
    using kvTest::kvTest;
    bool canStart() override {
        regParm(s_len);
        return true;
    }
    bool initData() override {
        if (name == "zorsSkip_32f" && wants("skip") && s_len.value() == 16)
            return false;
        if (name == "zorsStuck_32f" && wants("stuck"))
            for (;;)
                pause();
        s_calls = 0;
        s_src.init(kv32f);
        s_dst.init(kv32f);
        s_counts.init(kv16s);
        s_state.init(kv8u);
        if (!s_src.createVector(s_len.value(), smRandom, 1, 2) ||
            !s_dst.createVector(s_len.value(), smZero, 0, 0) || !s_counts.createVector(8, smZero, 0, 0) ||
            !s_state.createVector(64, smZero, 0, 0))
            return false;
        s_state.setWorkMemory();
        if (name == "zorsData_32f" && wants("data"))
            s_src.p32f[3] = 5;
        return true;
    }
    bool flushData() override {
        for (kvVector* vector : {&s_src, &s_dst, &s_counts, &s_state})
            vector->deleteVector();
        return true;
    }
};

[[gnu::noinline]] int copy(float factor) {
    for (int i = 0; i < s_src.length(); ++i)
        s_dst.p32f[i] = s_src.p32f[i] * factor;
    ++s_calls;
    return 0;
}

/** A copy, and the deed when the environment asks for it. */
template <class Deed>
int copyOr(std::string_view deed, Deed doIt) {
    static const bool wanted = wants(deed);
    copy(1);
    return wanted ? doIt() : 0;
}

int tcall_zorsData_32f() {
    return copy(1);
}
int tcall_zorsSkip_32f() {
    return copy(1);
}
int tcall_zorsStuck_32f() {
    return copy(1);
}
/** One instruction more on demand. */
int tcall_zorsSteady_32f() {
    static const bool more = wants("more");
    __asm__ volatile("test %0, %0\n\tjz 1f\n\tnop\n1:" : : "r"(static_cast<int>(more)) : "cc");
    return copy(1);
}
int tcall_zorsFault_32f() {
    return copyOr("fault", [] { return *static_cast<volatile int*>(nullptr); });
}
int tcall_zorsLate_32f() {
    return copyOr("late", [] { return s_calls > 3000 ? *static_cast<volatile int*>(nullptr) : 0; });
}
int tcall_zorsHang_32f() {
    return copyOr("hang", [] {
        for (;;)
            pause();
        return 0;
    });
}
int tcall_zorsDie_32f() {
    return copyOr("die", [] { return raise(SIGKILL); });
}
int tcall_zorsStatus_32f() {
    return copyOr("status", [] { return 3; });
}
int tcall_zorsUlp_32f() {
    return copyOr("ulp", [] { return copy(1 + 0x1p-23F); });
}
int tcall_zorsWrong_32f() {
    return copyOr("wrong", [] {
        s_counts.p16s[2] = 1;
        return 0;
    });
}
/** Wrong only in what the second call makes of the state that the first one left. */
int tcall_zorsState_32f() {
    s_counts.p16s[5] = s_state.p8u[0];
    return copyOr("state", [] {
        s_state.p8u[0] = 1;
        return 0;
    });
}
/** One call in fifty is made twice. */
int tcall_zorsSlow_32f() {
    return copyOr("slow", [] { return s_calls % 50 == 0 ? copy(1) : 0; });
}

KV_REG(TimSide, zorsData_32f)
KV_REG(TimSide, zorsDie_32f)
KV_REG(TimSide, zorsFault_32f)
KV_REG(TimSide, zorsHang_32f)
KV_REG(TimSide, zorsLate_32f)
KV_REG(TimSide, zorsSkip_32f)
KV_REG(TimSide, zorsSlow_32f)
KV_REG(TimSide, zorsState_32f)
KV_REG(TimSide, zorsStatus_32f)
KV_REG(TimSide, zorsSteady_32f)
KV_REG(TimSide, zorsStuck_32f)
KV_REG(TimSide, zorsUlp_32f)
KV_REG(TimSide, zorsWrong_32f)

} // namespace

/** \file
 * Work whose cost is known by construction: chains of additions or multiplications, each of which waits for
 * the one before.
 */
#ifndef CHAINS_H
#define CHAINS_H

/** What a chain is made of, and the core clocks of one link. */
enum class Link { addition = 1, multiplication = 3 };

/**
 * A chain of `links`. Its register is a fixed one that callers need not preserve, and only named as ruined:
 * the chain of the next call then continues this one without a load, a store or a move between them, so that
 * calls in a loop cost the chain and nothing else as long as the loop's own instructions fit beside it.
 * \return 0, the status of a call that went well
 */
template <Link link, int links>
[[gnu::always_inline]] inline int chain() {
    if constexpr (link == Link::addition)
        asm volatile(".rept %c0\n\tadd %%r9, %%r9\n\t.endr" : : "i"(links) : "r9", "cc");
    else
        asm volatile(".rept %c0\n\timul %%r9, %%r9\n\t.endr" : : "i"(links) : "r9", "cc");
    return 0;
}

#endif

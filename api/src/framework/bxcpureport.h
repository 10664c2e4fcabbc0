/** \file
 * The report of the processor, from the registers of the CPUID instruction.
 */
#ifndef BXCPUREPORT_H
#define BXCPUREPORT_H

#include "foundation/bxstring.h"
#include "system/bxcpuid.h"

/** Gives the registers of a CPUID leaf. */
using bxCpuidQuery = CPUID (*)(unsigned int leaf, unsigned int subleaf);

/**
 * The sections of the report, each a block of lines. A section whose leaves the processor has not is empty.
 * Field positions are those of the public CPUID documentation.
 */
class bxCpuReport {
  public:
    /** Without a query the processor that the program runs on is asked. */
    explicit bxCpuReport(bxCpuidQuery query = nullptr);

    /** Title, with a warning for a processor of another vendor than the one whose layout is printed. */
    bxString title() const;
    /** Largest functions, vendor and brand. */
    bxString identity() const;
    bxString signature() const;
    bxString flags() const;
    bxString multiThreading() const;
    bxString cacheParms() const;
    bxString l2Features() const;

    static bxString asterisks();

  private:
    bool valid(unsigned int leaf) const;
    CPUID leaf(unsigned int number, unsigned int subleaf = 0) const { return m_query(number, subleaf); }
    bxString vendor() const;
    bxString brand() const;
    /** The leaf that lists the caches: 4, or what other vendors have in its layout; 0 when there is none. */
    unsigned int cacheLeaf() const;
    /** Cores in a package; 0 when it is not known. */
    unsigned int coresPerPackage() const;

    bxCpuidQuery m_query;
};

#endif

/** \file
 * Physical pages of code and constants.
 */
#ifndef BXFRESHPAGES_H
#define BXFRESHPAGES_H

/**
 * Gives what the process maps of files to be read or executed memory of its own, with the same content at the
 * same addresses. The pages of a file lie where the system once read them to, for all processes and for
 * hours; some code costs several per cent more or less there, since caches beyond the first go by physical
 * addresses. What the system does not let be replaced stays. \param spare  pages to be taken first and kept,
 * so that the same memory does not come back in the next process
 */
void bxTakeFreshPages(int spare);

#endif

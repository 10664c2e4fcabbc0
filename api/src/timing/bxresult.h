/** \file
 * Result codes of a measurement.
 */
#ifndef BXRESULT_H
#define BXRESULT_H

/** Result of a step, ordered by severity: of two results the larger holds. */
enum bxResult : int {
    UNDEFINED,
    OK,
    ACCURWRN,
    BADSTSWRN,
    DATAWRN,
    FUNCWRN,
    WARNING,
    ACCURFAIL,
    DATAFAIL,
    FUNCFAIL,
    EXCPTFAIL,
    FAIL
};

/** Whether a result is a warning, which does not stop a test. */
constexpr bool bxIsWarning(bxResult r) {
    return r > OK && r <= WARNING;
}

/** Whether a result is a failure, which stops a test. */
constexpr bool bxIsFailure(bxResult r) {
    return r > WARNING;
}

/** Name of a result, "UNKNOWN" for a value outside the codes. */
const char* bxResultName(bxResult r);

/** Text of a result, "unknown result" for a value outside the codes. */
const char* bxResultString(bxResult r);

#endif

#!/usr/bin/env python3
"""Checks the suite of the reference library over the running program.

    suites_test.py pinned PROGRAM     names, sources, classes, macros, parameters, values, order, combinations that
                                      are passed over, divisors, units and the list of hot functions
    suites_test.py extremes PROGRAM   every whole-number parameter at its limits, one beyond them, at 0, -1 and the
                                      ends of int: each combination ends in a row or in a line that says why not

The emulator that runs the program, if any, stands behind it as further words.
"""
import collections
import csv
import itertools
import math
import pathlib
import re
import subprocess
import sys
import tempfile

WINDOW = {"winSequence": "short long"}
IDS = "MPEG-1 MPEG-2"
VLC = {"len": "36..576 *2", "escapeMode": "no_escape half_escape escape"}
CHANNELS = {"Number of channels": "2..7 +5", "Length": "100..2048 +1948"}
HUFFMAN = {"id": "MPEG-1", "block": "long", "huffmanLen": "36..576 *2", "escTable": "noESC ESC"}
PQMF = {"mode": "1..2 +1", "offset": "0..3 +3"}
REQUANT = {"nonZeroBound": "9..576 *4", "id": IDS, "mode": "stereo is_stereo ms_stereo ms_intensity mono",
           "block": "long short mixed"}
MDCT = {"Length": "64..4096 *2"}
POW = {"Length": "128..1100 *2"}
FRAME = {"frameSize": "1024 960"}
PREDICT = {"k0": "30 32", "len": "4 8 16"}
FDP_RESET = {"Length": "2029"}


def bands(p):
    return 12 if p["winSequence"] == "short" else 41


def sections_do_not_fit(p):
    return p["sectLen"] > bands(p) or (p["tuple"] == "escape" and p["sectLen"] != bands(p))


def order_too_high(p):
    return p["tnsOrder"] > (7 if p["winSequence"] == "short" else 12)


def per(name):
    return lambda p: p[name]


# source, class, macro, functions, parameters, divisor (None: a test without that cell), unit, what is passed over
TABLE = [
    ("p_acaac_decelt_ia", "TimacAACDecodeElt", "KV_REG_I", "zorsDecodeDatStrElt_AAC", {"count": "1..512 *2"},
     lambda p: min(p["count"], 510), "e"),
    ("p_acaac_decelt_ia", "TimacAACDecodeElt", "KV_REG_I", "zorsDecodeFillElt_AAC", {"count": "1..269 *2"},
     lambda p: min(p["count"], 269), "e"),
    ("p_acaac_decms_ia", "TimacAACDecodeMs", "KV_REG", "zorsDecodeMsStereo_AAC_32s_I zorsDecodePNS_AAC_32s", WINDOW,
     1024, "e"),
    ("p_acaac_decms_ia", "TimacAACDecodeMs", "KV_REG", "zorsDecodeIsStereo_AAC_32s",
     {**WINDOW, "ScaleFactor": "1 -1 9"}, 1024, "e"),
    ("p_acaac_decms_ia", "TimacAACDecodeMs", "KV_REG", "zorsDeinterleaveSpectrum_AAC_32s", {"winSequence": "short"},
     1024, "e"),
    ("p_acaac_longterm_ia", "TimacAACLongTerm", "KV_REG", "zorsLongTermPredict_AAC_32s", WINDOW, 2048, "e"),
    ("p_acaac_longterm_ia", "TimacAACLongTerm", "KV_REG", "zorsLongTermReconstruct_AAC_32s", WINDOW, 1024, "e"),
    ("p_acaac_mdct_ia", "TimaacMDCT", "KV_REG", "zorsMDCTFwd_AAC_32s", WINDOW,
     lambda p: 128 if p["winSequence"] == "short" else 1024, "e"),
    ("p_acaac_mdct_ia", "TimaacMDCT", "KV_REG", "zorsMDCTInv_AAC_32s16s", WINDOW, 1024, "e"),
    ("p_acaac_noislsdec_ia", "TimacAACNoiselessDec", "KV_REG_I",
     "zorsNoiselessDecoder_LC_AAC zorsNoiselessDecode_AAC",
     {**WINDOW, "sectLen": "1 4 12 41", "tuple": "4tuple 2tuple escape"}, 1024, "e", sections_do_not_fit),
    ("p_acaac_quanti_ia", "TimacAACQuantInv", "KV_REG_I", "zorsQuantInv_AAC_32s_I",
     {**WINDOW, "dataValue": "3 15 63 127 255"}, 1024, "e"),
    ("p_acaac_tns_ia", "TimacAACTns", "KV_REG", "zorsDecodeTNS_AAC_32s_I zorsEncodeTNS_AAC_32s_I",
     {**WINDOW, "tnsOrder": "1 4 7 12"}, 1024, "e", order_too_high),
    ("p_acaac_vlc_ia", "TimacVLC_AAC", "KV_REG_I", "zorsVLCEncodeEscBlock_AAC_16s1u zorsVLCDecodeEscBlock_AAC_1u16s",
     {**VLC, "tableSize": "1089"}, 1089, "e"),
    ("p_acaac_vlc_ia", "TimacVLC_AAC", "KV_REG_I", "zorsVLCCountEscBits_AAC_16s32s",
     {**VLC, "len": "36", "tableSize": "1089"}, per("len"), "e"),
    ("p_acmp3_dctfwd_ia", "TimacDCTFwd", "KV_REG", "zorsMDCTFwd_MP3_32s", {"block": "long short"}, 576, "e"),
    ("p_acmp3_dctinv_ia", "TimacDCTInv", "KV_REG_I", "zorsMDCTInv_MP3_32s",
     {"nonZeroBound": "9..576 *2", "block": "long short"}, per("nonZeroBound"), "e"),
    ("p_acmp3_huffman_ia", "TimacHufEnc", "KV_REG_I",
     "zorsHuffmanEncode_MP3_32s1u zorsHuffmanDecode_MP3_1u32s zorsHuffmanDecodeSfb_MP3_1u32s "
     "zorsHuffmanDecodeSfbMbp_MP3_1u32s", HUFFMAN, per("huffmanLen"), "e"),
    ("p_acmp3_jointenc_ia", "TimacJointEnc", "KV_REG", "zorsJointStereoEncode_MP3_32s_I",
     {"id": IDS, "block": "short long", "mode": "ms_stereo is_stereo"}, 576, "e"),
    ("p_acmp3_pqmf_ao", "kvsConvert", "KV_REG_X", "zorsSynthesisFilter_PQMF_MP3_32f", PQMF, 2048, "e"),
    ("p_acmp3_pqmf_ao", "kvsAnalysis_PQMF_MP3", "KV_REG_X", "zorsAnalysisFilter_PQMF_MP3_32f", PQMF, 2048, "e"),
    ("p_acmp3_pqmf_ia", "TimacPQMF", "KV_REG", "zorsAnalysisPQMF_MP3_16s32s", {"mode": "notInterleaved interleaved"},
     32, "e"),
    ("p_acmp3_psych_ia", "TimacPsych", "KV_REG", "zorsPsychoacousticModelTwo_MP3_16s",
     {"id": IDS, "block": "normal", "mode": "stereo joint"}, 576, "e"),
    ("p_acmp3_psych_ia", "TimacPsych", "KV_REG", "zorsQuantize_MP3_32s_I",
     {"id": IDS, "block": "normal", "mode": "mono stereo"}, 576, "e"),
    ("p_acmp3_reqnt_ia", "Timm3ReQnt", "KV_REG", "zorsReQuantize_MP3_32s_I zorsReQuantizeSfb_MP3_32s_I", REQUANT, 576,
     "e"),
    ("p_acmp3_synthpqmf_ia", "Timacmp4_SynthPQMF", "KV_REG_I", "zorsSynthPQMF_MP3_32s16s", {"mode": "1 2"}, 32, "e"),
    ("p_acmp3_unpkfh_ia", "Timm3UnpackFH", "KV_REG_I", "zorsUnpackFrameHeader_MP3", {}, 1, ""),
    ("p_acmp3_unpksf_ia", "Timm3UnpackSF", "KV_REG_I", "zorsUnpackScaleFactors_MP3_1u8s",
     {"id": IDS, "blockType": "long short mixed"}, 1, ""),
    ("p_acmp3_unpksi_ia", "Timm3UnpackSI", "KV_REG_I", "zorsUnpackSideInfo_MP3", {"id": IDS, "mode": "stereo mono"},
     1, ""),
    ("p_acmp3_vlc_ia", "TimacVLC_MP3", "KV_REG_I", "zorsVLCEncodeEscBlock_MP3_16s1u zorsVLCDecodeEscBlock_MP3_1u16s",
     {**VLC, "tableSize": "961"}, 961, "e"),
    ("p_acmp3_vlc_ia", "TimacVLC_MP3", "KV_REG_I", "zorsVLCCountEscBits_MP3_16s32s",
     {**VLC, "len": "36", "tableSize": "961"}, per("len"), "e"),
    ("p_ac_applysf_ba", "TimApply", "KV_REG", "zorsScale_32f_I",
     {"Max value of scale factor": "50..100 +25", "number of bands": "5..10 +1"}, per("Max value of scale factor"), "e"),
    ("p_ac_calcsf_ba", "TimCalc", "KV_REG", "zorsCalcSF_16s32f", {"Lenght of vector": "100..200 +50",
                                                                "Offset": "6..10 +2"}, per("Lenght of vector"), "e"),
    ("p_ac_deinterleave_ba", "TimDeinterleave", "KV_REG", "zorsDeinterleave_16s zorsDeinterleave_32f", CHANNELS,
     lambda p: p["Number of channels"] * p["Length"], "e"),
    ("p_ac_interleave_ba", "TimInterleave", "KV_REG", "zorsInterleave_16s zorsInterleave_32f", CHANNELS,
     lambda p: p["Number of channels"] * p["Length"], "e"),
    ("p_ac_makefloat_ia", "Timac_MakeFloat", "KV_REG", "zorsMakeFloat_16s32f", MDCT, per("Length"), "e"),
    ("p_ac_mdct_ia", "Timac_MDCT", "KV_REG",
     "zorsMDCTFwd_32f zorsMDCTInv_32f zorsMDCTFwd_32f_I zorsMDCTInv_32f_I", MDCT, per("Length"), "e"),
    ("p_ac_mdct_ia", "Timac_MDCT", "KV_REG", "zorsMDCTFwd_16s_Sfs", {**MDCT, "ScaleFactor": "0 1 2 -1"},
     per("Length"), "e"),
    ("p_ac_pow_ba", "TimAdd", "KV_REG", "zorsPow34_32f zorsPow34_32f16s zorsPow43_16s32f", POW, per("Length"), "e"),
    ("p_acfdp_ba", "TimFDP", "KV_REG", "zorsFDPFwd_32f zorsFDPInv_32f_I", {"Length": "1024"}, per("Length"), "e"),
    ("p_acfdp_reset_ba", "CResetFDP_32f", "KV_REG", "zorsFDPReset_32f", FDP_RESET, None, ""),
    ("p_acfdp_reset_ba", "CResetFDPGroup_32f", "KV_REG", "zorsFDPResetGroup_32f",
     {**FDP_RESET, "ResetGroupNumber": "1", "Step": "1"}, None, ""),
    ("p_acfir_block_ba", "TimFirBlock", "KV_REG", "zorsFIRBlockOne_32f",
     {"Length": "1024..32768 *4", "Order": "1..8 +1"}, per("Length"), "e"),
    ("p_acdts_synthesis_pk", "kvsSynthesisFilter_DTS", "KV_REG_X", "zorsSynthesisFilter_DTS_32f",
     {"mode": "0..1 +1", "offset": "0..3 +3"}, 2048, "e"),
    ("p_acsbr_predict_ia", "Timacsbr_Predict", "KV_REG",
     "zorsPredictCoef_SBR_R_32f_D2L zorsPredictCoef_SBR_C_32f_D2L zorsPredictCoef_SBR_C_32fc_D2L", PREDICT,
     lambda p: p["k0"] * p["len"], "k0*len"),
    ("p_acsbr_synthes_ia", "Timacsbr_Synthes", "KV_REG",
     "zorsAnalysisFilter_SBR_RToC_32f_D2L zorsAnalysisFilter_SBR_RToC_32f32fc_D2L "
     "zorsAnalysisFilter_SBR_RToR_32f_D2L zorsSynthesisFilter_SBR_CToR_32f_D2L "
     "zorsSynthesisFilter_SBR_CToR_32fc32f_D2L zorsSynthesisFilter_SBR_RToR_32f_D2L "
     "zorsSynthesisDownFilter_SBR_CToR_32f_D2L zorsSynthesisDownFilter_SBR_CToR_32fc32f_D2L "
     "zorsSynthesisDownFilter_SBR_RToR_32f_D2L", FRAME, per("frameSize"), "e"),
    ("p_actvq_ba", "CPreSelect_VQ_32f", "KV_REG", "zorsVQPreliminarySelect_32f", {}, None, ""),
    ("p_actvq_ba", "CMainSelect_VQ_32f", "", "zorsVQMainSelect_32f", {}, None, ""),
    ("p_actvq_ba", "CIndexSelect_VQ_32f", "KV_REG", "zorsVQIndexSelect_32f", {}, None, ""),
    ("p_actvq_ba", "CVectorReconstruction_VQ_32f", "KV_REG", "zorsVQReconstruction_32f", {}, None, ""),
]
HOT = {"zorsSynthesisFilter_SBR_CToR_32fc32f_D2L", "zorsSynthesisFilter_PQMF_MP3_32f",
       "zorsPredictCoef_SBR_C_32fc_D2L", "zorsMDCTInv_32f", "zorsAnalysisFilter_SBR_RToC_32f32fc_D2L"}
FUNCTION_CELLS, PARAMETER_CELLS = 3, 8
ENDS_OF_INT = (-2**31, 2**31 - 1)

Test = collections.namedtuple("Test", "source name macro function texts parms divisor unit passed_over")


def values(text):
    """The values of "1..512 *2" (up to the limit) or "1 4 12", whole numbers as such."""
    bounds = re.fullmatch(r"(\d+)\.\.(\d+) ([+*])(\d+)", text)
    if not bounds:
        return [int(word) if re.fullmatch(r"-?\d+", word) else word for word in text.split()]
    first, last, step = int(bounds[1]), int(bounds[2]), int(bounds[4])
    found = []
    while first <= last:
        found.append(first)
        first = first * step if bounds[3] == "*" else first + step
    return found


def tests():
    for source, name, macro, functions, parms, divisor, unit, *passed_over in TABLE:
        for function in functions.split():
            yield Test(source, name, macro, function, parms, {key: values(text) for key, text in parms.items()},
                       divisor if callable(divisor) else lambda _, fixed=divisor: fixed, unit,
                       passed_over[0] if passed_over else lambda _: False)


def combinations(test):
    return [dict(zip(test.parms, combination)) for combination in itertools.product(*test.parms.values())]


def run(program, directory, *keys):
    """The listing by function, and the rows of result and name table by function."""
    done = subprocess.run(program + ["-B", "-H", f"-p{directory}", f"-l{directory}", "-rrows.csv", "-qnames.csv",
                                     "-dMethod=Manual", "-dNumLoops=1", *keys],
                          stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, timeout=240, check=False)
    if done.returncode not in (0, 1):
        sys.exit(f"the run ended with {done.returncode}\n{done.stdout[-3000:]}")
    listing = {}
    for block in re.split(r"\n(?=\| Function  : )", done.stdout)[1:]:
        listing[re.match(r"\| Function  : (\S+)", block)[1]] = block
    tables = []
    for table in ("rows.csv", "names.csv"):
        rows = collections.defaultdict(list)
        with open(directory / table, encoding="utf-8", newline="") as file:
            for cells in csv.reader(file):
                if len(cells) > FUNCTION_CELLS and cells[0].startswith("zors"):
                    rows["_".join(cell for cell in cells[:FUNCTION_CELLS] if cell != "-")].append(
                        [cell for cell in cells[FUNCTION_CELLS:]])
        tables.append(rows)
    return listing, *tables


def parameters(cells):
    return [cell for cell in cells[:PARAMETER_CELLS] if cell != "-"]


def expected_rows(test):
    for p in combinations(test):
        if not test.passed_over(p):
            divisor = test.divisor(p)
            yield [str(cell) for cell in ([] if divisor is None else [divisor]) + list(p.values())]


def pinned(program, directory):
    listing, rows, names = run(program, directory, "-LP")
    wanted = {test.function: test for test in tests()}
    if set(wanted) != set(rows):
        yield f"functions: {sorted(set(wanted) ^ set(rows))}"
    for function, test in wanted.items():
        title = listing.get(function, "")
        label = re.search(r"\| Test      : (\S+) +(\S*?) *\|", title)
        source = re.search(r"\| Source    : (\S+)\.cpp", title)
        found = {
            "class and macro": label and (label[1], label[2]),
            "source": source and source[1],
            "names": [parameters(cells) for cells in names[function]],
            "rows": [parameters(cells) for cells in rows[function]],
            "units": {cells[PARAMETER_CELLS + 2].strip(" -") for cells in rows[function]},
            "hot": {cells[-1] for cells in rows[function]},
        }
        first = [] if test.divisor(combinations(test)[0]) is None else ["divisor"]
        right = {
            "class and macro": (test.name, test.macro),
            "source": test.source,
            "names": [first + list(test.parms)],
            "rows": list(expected_rows(test)),
            "units": {test.unit},
            "hot": {"Hot" if function in HOT else "-"},
        }
        for what, value in right.items():
            if found[what] != value:
                yield f"{function}: {what}: {found[what]}, not {value}"


def extreme(text):
    """Whole numbers at and beyond the limits of a text of values; None for a text of names."""
    limits = [int(word) for word in re.split(r"\.\.| [+*]\d+| ", text) if re.fullmatch(r"-?\d+", word)]
    if not limits:
        return None
    limits = (min(limits), max(limits))
    return list(dict.fromkeys([*limits, limits[0] - 1, limits[1] + 1, 0, -1, *ENDS_OF_INT]))


def extremes(program, directory):
    """In each run every test has another of its whole-number parameters at the extremes."""
    # The emulator reads 16 bytes for the 4 of a scalar multiply-add, which guarded data do not have.
    path = ["-TAVX"] if len(program) > 1 else []
    numbers = [(test, [name for name, text in test.texts.items() if extreme(text)]) for test in tests()]
    for i in range(max(len(names) for _, names in numbers)):
        varied = [(test, names[i], {**test.parms, names[i]: extreme(test.texts[names[i]])})
                  for test, names in numbers if i < len(names)]
        (directory / "extreme.ini").write_text("".join(
            f"[{test.function}]\n{name} = {'; '.join(map(str, parms[name]))}\n" for test, name, parms in varied))
        listing, rows, _ = run(program, directory, "-LI", "-P", f"-i{directory / 'extreme.ini'}",
                               "-dGuardBlocks=yes", "-dWatchdogSeconds=20", *path)
        for test, name, parms in varied:
            text = listing.get(test.function, "")
            count = math.prod(map(len, parms.values()))
            measured = len(rows[test.function])
            reasons = len(re.findall(r"^-- (?:Passed over|Data error): ", text, re.M))
            result = re.search(rf"^\| -(\S+) +{test.function} ", text, re.M)
            if measured + reasons != count or not result or "FAIL" in result[1]:
                yield f"{test.function}: {name}: {measured} rows, {reasons} reasons, {count} combinations\n{text}"
    function = "zorsReQuantize_MP3_32s_I"
    listing, rows, _ = run(program, directory, f"-f={function}", "-dnonZeroBound=9;577")
    reasons = listing[function].splitlines().count("-- Passed over: nonZeroBound=577 is not within 0 to 576")
    if not reasons == len(rows[function]) > 0:
        yield f"{reasons} reasons are shown at the default level, beside {len(rows[function])} rows"


def main():
    program = sys.argv[3:] + [sys.argv[2]]
    with tempfile.TemporaryDirectory() as directory:
        check = {"pinned": pinned, "extremes": extremes}[sys.argv[1]]
        faults = list(check(program, pathlib.Path(directory)))
    print("\n".join(faults) or "All is as it should be.")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())

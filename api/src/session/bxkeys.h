/** \file
 * The keys of the command line. A key is a row; what it consists of stands together in the file of its theme.
 */
#ifndef BXKEYS_H
#define BXKEYS_H

#include "output/bxpaths.h"
#include "session/bxoption.h"

#include <span>

/** What has to hold for a key to exist in this program. */
enum class bxKeyNeeds {
    nothing,
    nameTables, /**< some unit asked for the name table keys (bxRegQKeys) */
    libraryCore /**< the core of the tested library is linked and bound */
};

/** The file that a key names by its argument. */
struct bxKeyFile {
    const bxString* extension = nullptr; /**< of a name without one; null: the key names no file */
    bool lastCounts = false;             /**< of all keys with this extension only the last names a file */
    bxString (*path)(const bxString& name, const bxString& extension) = bxPaths::genOutPath;
};

/** A row of the key table. The texts are static; the session makes a bxOption of each row that applies. */
struct bxKeyRow {
    char key;
    bxKeyNeeds needs;
    bool hidden;
    const char* help;
    bxKeyInfo info;
    bxKeyApply apply;
    const char* descr;
    bxKeyFile file{};
};

/** All keys in the order of registration, which is the order of the help: theme by theme. */
std::span<const bxKeyRow> bxKeyTable();
std::span<const bxKeyRow> bxInputKeys();
std::span<const bxKeyRow> bxOutputKeys();
std::span<const bxKeyRow> bxRunKeys();
std::span<const bxKeyRow> bxExitKeys();

/** In the place of a key's character: the short help. */
inline constexpr char hintShort = 1;
/** Help that was asked for: 0 none, `hintShort`, or the character behind -h or -?. */
extern char s_hintArg;
/** Hidden keys stay out of the help; cleared by -?. */
extern bool s_hintHide;
/** -v was given. */
extern bool s_version;

// Console and its detail. Letters that are not listed count for nothing.
extern const char *const B_help, *const B_descr;
bxString B_info(bxString argument);
void B_apply(bxString argument, bxSession* session);
extern const char *const A_help, *const A_descr;
bxString A_info(bxString argument);
void A_apply(bxString argument, bxSession* session);
extern const char *const L_help, *const L_descr;
bxString L_info(bxString argument);
void L_apply(bxString argument, bxSession* session);

// Parameter values.
extern const char *const d_help, *const d_descr;
bxString d_info(bxString argument);
void d_apply(bxString argument, bxSession* session);
extern const char *const i_help, *const i_descr;
bxString i_info(bxString argument);
void i_apply(bxString argument, bxSession* session);
extern const char *const I_help, *const I_descr;
bxString I_info(bxString argument);
void I_apply(bxString argument, bxSession* session);
extern const char *const P_help, *const P_descr;
bxString P_info(bxString argument);
void P_apply(bxString argument, bxSession* session);

// Output files. A small letter creates the file, a capital letter appends to it.
extern const char *const o_help, *const o_descr;
bxString o_info(bxString argument);
void o_apply(bxString argument, bxSession* session);
extern const char *const O_help, *const O_descr;
bxString O_info(bxString argument);
void O_apply(bxString argument, bxSession* session);
extern const char *const r_help, *const r_descr;
bxString r_info(bxString argument);
void r_apply(bxString argument, bxSession* session);
extern const char *const R_help, *const R_descr;
bxString R_info(bxString argument);
void R_apply(bxString argument, bxSession* session);
extern const char *const q_help, *const q_descr;
bxString q_info(bxString argument);
void q_apply(bxString argument, bxSession* session);
extern const char *const Q_help, *const Q_descr;
bxString Q_info(bxString argument);
void Q_apply(bxString argument, bxSession* session);
extern const char *const u_help, *const u_descr;
bxString u_info(bxString argument);
void u_apply(bxString argument, bxSession* session);
extern const char *const U_help, *const U_descr;
bxString U_info(bxString argument);
void U_apply(bxString argument, bxSession* session);
extern const char *const g_help, *const g_descr;
bxString g_info(bxString argument);
void g_apply(bxString argument, bxSession* session);

// Default name and directories: in force before any other key is applied, so that applying them does nothing.
extern const char *const n_help, *const n_descr;
bxString n_info(bxString argument);
void n_apply(bxString argument, bxSession* session);
extern const char *const p_help, *const p_descr;
bxString p_info(bxString argument);
void p_apply(bxString argument, bxSession* session);
extern const char *const l_help, *const l_descr;
bxString l_info(bxString argument);
void l_apply(bxString argument, bxSession* session);

// Selection of tests.
extern const char *const f_help, *const f_descr;
bxString f_info(bxString argument);
void f_apply(bxString argument, bxSession* session);
extern const char *const t_help, *const t_descr;
bxString t_info(bxString argument);
void t_apply(bxString argument, bxSession* session);
extern const char *const F_help, *const F_descr;
bxString F_info(bxString argument);
void F_apply(bxString argument, bxSession* session);
extern const char *const H_help, *const H_descr;
bxString H_info(bxString argument);
void H_apply(bxString argument, bxSession* session);
extern const char *const s_help, *const s_descr;
bxString s_info(bxString argument);
void s_apply(bxString argument, bxSession* session);

// The measurement.
extern const char *const Y_help, *const Y_descr;
bxString Y_info(bxString argument);
void Y_apply(bxString argument, bxSession* session);
extern const char *const T_help, *const T_descr;
bxString T_info(bxString argument);
void T_apply(bxString argument, bxSession* session);
extern const char *const N_help, *const N_descr;
bxString N_info(bxString argument);
void N_apply(bxString argument, bxSession* session);
extern const char *const S_help, *const S_descr;
bxString S_info(bxString argument);
void S_apply(bxString argument, bxSession* session);
extern const char *const C_help, *const C_descr;
bxString C_info(bxString argument);
void C_apply(bxString argument, bxSession* session);

// Information instead of a run; hq is the question mark.
extern const char *const e_help, *const e_descr;
bxString e_info(bxString argument);
void e_apply(bxString argument, bxSession* session);
extern const char *const v_help, *const v_descr;
bxString v_info(bxString argument);
void v_apply(bxString argument, bxSession* session);
extern const char *const h_help, *const h_descr;
bxString h_info(bxString argument);
void h_apply(bxString argument, bxSession* session);
extern const char *const hq_help, *const hq_descr;
bxString hq_info(bxString argument);
void hq_apply(bxString argument, bxSession* session);

#endif

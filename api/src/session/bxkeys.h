/** \file
 * The keys of the command line: one row of data each, and the functions that describe and apply them.
 */
#ifndef BXKEYS_H
#define BXKEYS_H

#include "session/bxkeytexts.h"
#include "session/bxoption.h"

#include <span>

/** What has to hold for a key to exist in this program. */
enum class bxKeyNeeds {
    nothing,
    nameTables, ///< some unit asked for the name table keys (bxRegQKeys)
    libraryCore ///< the core of the tested library is linked and bound
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
};

/** All keys in the order of registration, which is the order of the help. */
std::span<const bxKeyRow> bxKeyTable();

/** In the place of a key's character: the short help. */
inline constexpr char hintShort = 1;
/** Help that was asked for: 0 none, `hintShort`, or the character behind -h or -?. */
extern char s_hintArg;
/** Hidden keys stay out of the help; cleared by -?. */
extern bool s_hintHide;
/** -v was given. */
extern bool s_version;

// Console and its detail. Letters that are not listed count for nothing.
bxString B_info(bxString argument);
void B_apply(bxString argument, bxSession* session);
bxString A_info(bxString argument);
void A_apply(bxString argument, bxSession* session);
bxString L_info(bxString argument);
void L_apply(bxString argument, bxSession* session);

// Parameter values.
bxString d_info(bxString argument);
void d_apply(bxString argument, bxSession* session);
bxString i_info(bxString argument);
void i_apply(bxString argument, bxSession* session);
bxString I_info(bxString argument);
void I_apply(bxString argument, bxSession* session);
bxString P_info(bxString argument);
void P_apply(bxString argument, bxSession* session);

// Output files. A small letter creates the file, a capital letter appends to it.
bxString o_info(bxString argument);
void o_apply(bxString argument, bxSession* session);
bxString O_info(bxString argument);
void O_apply(bxString argument, bxSession* session);
bxString r_info(bxString argument);
void r_apply(bxString argument, bxSession* session);
bxString R_info(bxString argument);
void R_apply(bxString argument, bxSession* session);
bxString q_info(bxString argument);
void q_apply(bxString argument, bxSession* session);
bxString Q_info(bxString argument);
void Q_apply(bxString argument, bxSession* session);
bxString u_info(bxString argument);
void u_apply(bxString argument, bxSession* session);
bxString U_info(bxString argument);
void U_apply(bxString argument, bxSession* session);
bxString g_info(bxString argument);
void g_apply(bxString argument, bxSession* session);

// Default name and directories: in force before any other key is applied, so that applying them does nothing.
bxString n_info(bxString argument);
void n_apply(bxString argument, bxSession* session);
bxString p_info(bxString argument);
void p_apply(bxString argument, bxSession* session);
bxString l_info(bxString argument);
void l_apply(bxString argument, bxSession* session);

// Selection of tests.
bxString f_info(bxString argument);
void f_apply(bxString argument, bxSession* session);
bxString t_info(bxString argument);
void t_apply(bxString argument, bxSession* session);
bxString F_info(bxString argument);
void F_apply(bxString argument, bxSession* session);
bxString H_info(bxString argument);
void H_apply(bxString argument, bxSession* session);
bxString s_info(bxString argument);
void s_apply(bxString argument, bxSession* session);

// The measurement.
bxString Y_info(bxString argument);
void Y_apply(bxString argument, bxSession* session);
bxString T_info(bxString argument);
void T_apply(bxString argument, bxSession* session);
bxString N_info(bxString argument);
void N_apply(bxString argument, bxSession* session);
bxString S_info(bxString argument);
void S_apply(bxString argument, bxSession* session);
bxString C_info(bxString argument);
void C_apply(bxString argument, bxSession* session);

// Information instead of a run; hq is the question mark.
bxString e_info(bxString argument);
void e_apply(bxString argument, bxSession* session);
bxString v_info(bxString argument);
void v_apply(bxString argument, bxSession* session);
bxString h_info(bxString argument);
void h_apply(bxString argument, bxSession* session);
bxString hq_info(bxString argument);
void hq_apply(bxString argument, bxSession* session);

#endif

#include "session/bxkeys.h"

namespace {
constexpr bxKeyNeeds nothing = bxKeyNeeds::nothing;
constexpr bxKeyNeeds nameTables = bxKeyNeeds::nameTables;
constexpr bxKeyNeeds libraryCore = bxKeyNeeds::libraryCore;
constexpr bool shown = false;
constexpr bool hidden = true;

constexpr bxKeyRow keyTable[] = {
    {'B', nothing, shown, B_help, B_info, B_apply, B_descr},
    {'A', nothing, shown, A_help, A_info, A_apply, A_descr},
    {'d', nothing, shown, d_help, d_info, d_apply, d_descr},
    {'i', nothing, shown, i_help, i_info, i_apply, i_descr},
    {'I', nothing, shown, I_help, I_info, I_apply, I_descr},
    {'P', nothing, shown, P_help, P_info, P_apply, P_descr},
    {'o', nothing, shown, o_help, o_info, o_apply, o_descr},
    {'O', nothing, shown, O_help, O_info, O_apply, O_descr},
    {'L', nothing, shown, L_help, L_info, L_apply, L_descr},
    {'r', nothing, shown, r_help, r_info, r_apply, r_descr},
    {'R', nothing, shown, R_help, R_info, R_apply, R_descr},
    {'q', nameTables, shown, q_help, q_info, q_apply, q_descr},
    {'Q', nameTables, shown, Q_help, Q_info, Q_apply, Q_descr},
    {'u', nothing, shown, u_help, u_info, u_apply, u_descr},
    {'U', nothing, shown, U_help, U_info, U_apply, U_descr},
    {'g', nothing, shown, g_help, g_info, g_apply, g_descr},
    {'n', nothing, shown, n_help, n_info, n_apply, n_descr},
    {'p', nothing, shown, p_help, p_info, p_apply, p_descr},
    {'l', nothing, shown, l_help, l_info, l_apply, l_descr},
    {'f', nothing, shown, f_help, f_info, f_apply, f_descr},
    {'t', nothing, shown, t_help, t_info, t_apply, t_descr},
    {'F', nothing, shown, F_help, F_info, F_apply, F_descr},
    {'Y', nothing, shown, Y_help, Y_info, Y_apply, Y_descr},
    {'H', nothing, shown, H_help, H_info, H_apply, H_descr},
    {'T', libraryCore, shown, T_help, T_info, T_apply, T_descr},
    {'N', libraryCore, shown, N_help, N_info, N_apply, N_descr},
    {'S', nothing, hidden, S_help, S_info, S_apply, S_descr},
    {'C', nothing, hidden, C_help, C_info, C_apply, C_descr},
    {'s', nothing, shown, s_help, s_info, s_apply, s_descr},
    {'e', nothing, shown, e_help, e_info, e_apply, e_descr},
    {'v', nothing, shown, v_help, v_info, v_apply, v_descr},
    {'h', nothing, shown, h_help, h_info, h_apply, h_descr},
    {'?', nothing, shown, hq_help, hq_info, hq_apply, hq_descr},
};
} // namespace

std::span<const bxKeyRow> bxKeyTable() {
    return keyTable;
}

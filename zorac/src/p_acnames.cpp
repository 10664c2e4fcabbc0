// The suite's parameters have names worth writing: the program gets the keys of the parameter-name tables.
#include "framework/bxregister.h"

[[maybe_unused]] static const bool s_nameTables = bxRegQKeys() != 0;

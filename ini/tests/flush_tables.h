// ini/tests/flush_tables.h
// The two tables the flush child alternates between, and their canonical file texts.
#pragma once

#include <vum-qib-osl/ini/ini.h>

#include <string>

namespace osl::test {

inline std::string flushValue(int group, int key, int generation) {
    return "generation " + std::to_string(generation) + " value of " + std::to_string(group) + "." +
           std::to_string(key) + " with some padding to make the file long";
}

/// Sets keys values in each of ten groups to the given generation (0 or 1).
inline void fillTable(Ini& ini, int keys, int generation) {
    for (int g = 0; g < 10; ++g) {
        for (int k = 0; k < keys; ++k) {
            ini.SetKeyValue("group" + std::to_string(g), "key" + std::to_string(k), flushValue(g, k, generation));
        }
    }
}

}  // namespace osl::test

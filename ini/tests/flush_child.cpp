// ini/tests/flush_child.cpp
// Test child: flushes a BackupIni, switching its table between generations FIRST and FIRST + 1,
// FLUSHES times (0: until it is killed). Usage: osl_ini_flush_child FILE KEYS FIRST FLUSHES
#include <vum-qib-osl/ini/qib_backup_ini.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <cstdlib>
#include <iostream>
#include <string>

#include "ini/tests/flush_tables.h"

int main(int argc, char** argv) {
    if (argc != 5) return 2;
    const int keys = std::atoi(argv[2]);
    const int first = std::atoi(argv[3]);
    const int flushes = std::atoi(argv[4]);
    try {
        BackupIni ini(argv[1]);
        for (int n = 1; flushes == 0 || n <= flushes; ++n) {
            osl::test::fillTable(ini, keys, first + n % 2);
            ini.FlushIniDataToFile("");
        }
    } catch (const QIBError& e) {
        std::cerr << e << "\n";
        return 1;
    }
    return 0;
}

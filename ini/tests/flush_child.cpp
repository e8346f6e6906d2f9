// ini/tests/flush_child.cpp
// Test child: flushes a BackupIni in a loop, switching its table between two generations, until
// it is killed. Usage: osl_ini_flush_child FILE KEYS
#include <vum-qib-osl/ini/qib_backup_ini.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <cstdlib>
#include <iostream>
#include <string>

#include "ini/tests/flush_tables.h"

int main(int argc, char** argv) {
    if (argc != 3) return 2;
    const int keys = std::atoi(argv[2]);
    try {
        BackupIni ini(argv[1]);
        for (int generation = 1;; ++generation) {
            osl::test::fillTable(ini, keys, generation % 2);
            ini.FlushIniDataToFile("");
        }
    } catch (const QIBError& e) {
        std::cerr << e << "\n";
        return 1;
    }
}

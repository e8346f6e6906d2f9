// ini/tests/flush_child.cpp
// Test child: flushes a BackupIni of ten groups of KEYS keys, switching the values between
// generations FIRST + 1 and FIRST, FLUSHES times (0: until it is killed).
// Usage: osl_ini_flush_child FILE KEYS FIRST FLUSHES
#include <vum-qib-osl/ini/qib_backup_ini.h>
#include <vum-qib-osl/misc/qib_error.h>

#include <cstdlib>
#include <iostream>
#include <string>

int main(int argc, char** argv) {
    if (argc != 5) return 2;
    const int keys = std::atoi(argv[2]), first = std::atoi(argv[3]), flushes = std::atoi(argv[4]);
    try {
        BackupIni ini(argv[1]);
        for (int n = 1; flushes == 0 || n <= flushes; ++n) {
            const std::string generation = "generation " + std::to_string(first + n % 2) + " value of ";
            for (int g = 0; g < 10; ++g)
                for (int k = 0; k < keys; ++k)
                    ini.SetKeyValue("group" + std::to_string(g), "key" + std::to_string(k),
                                    generation + std::to_string(g) + "." + std::to_string(k) + " padding the file");
            ini.FlushIniDataToFile("");
        }
    } catch (const QIBError& e) {
        std::cerr << e << "\n";
        return 1;
    }
    return 0;
}

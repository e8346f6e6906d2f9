// sync/tests/lock_child.cpp
// lock_child DIR NAME N COUNTER: takes the computer-scope lock DIR/NAME (DIR "" for the default
// directory) N times in a tight loop; while holding it, reads the number in COUNTER and writes
// it back plus one, so a lost update shows a broken exclusion. It collects after every unlock,
// so that the lock file comes and goes under the other processes.
#include <vum-qib-osl/sync/osl_lock.h>
#include <vum-qib-osl/sync/osl_lock_computer_storage.h>

#include <cstdio>
#include <cstdlib>

int main(int argc, char** argv) {
    if (argc != 5) return 2;
    OslLock lock(argv[1], argv[2]);
    for (int i = std::atoi(argv[3]); i > 0; --i) {
        if (!lock.Lock(OslLockShareExclusive)) return 3;
        long n = 0;
        if (FILE* in = std::fopen(argv[4], "r")) {
            if (std::fscanf(in, "%ld", &n) != 1) n = -1000000;
            std::fclose(in);
        }
        FILE* out = std::fopen(argv[4], "w");
        if (out == nullptr) return 4;
        std::fprintf(out, "%ld\n", n + 1);
        std::fclose(out);
        lock.Unlock(OslLockShareExclusive);
        OslLockComputerStorage::Instance()->GarbageCollector();
    }
    return 0;
}

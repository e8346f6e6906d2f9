// Uses the installed headers and library the way a product program does.
#include <vum-qib-osl/osl.h>

#include <iostream>
#include <sstream>

int main() {
    InitOSL();
    QibVr_Versions& versions = QibVr_Versions::Instance();
    versions.Register("consumer", "consumer 1.0");
    const std::string text = versions.ToString("consumer");
    std::cout << text;
    if (text.rfind("consumer 1.0\r\n", 0) != 0) return 1;

    static std::ostringstream captured;
    CLog::Instance()->SetProcessName("consumer");
    CLog::Instance()->SetFunctionChannel([](const char* line) { captured << line << '\n'; }, SevInfo, false);
    OSL_LOG(SevWarning, "", "main") << "installed library works";
    std::cout << captured.str();

    try {
        throw QIBLogicalError("consumer", "tests/install/main", 21);
    } catch (const QIBError& e) {
        std::cout << e << "\n";
    }
    return captured.str().find("-WARN  main : installed library works") == std::string::npos;
}

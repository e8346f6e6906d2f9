// message/src/message.cpp
// Messages on the process-wide catalog.
#include <vum-qib-osl/message/message.h>

#include <vum-qib-osl/message/map_file.h>
#include <vum-qib-osl/misc/qib_error.h>
#include <vum-qib-osl/misc/wenv.h>

#include <iostream>

namespace {

std::string catalogPath(const std::string& catalogFile) {
    // An empty MESSAGE_PATH counts as unset: where the convention began, setting a variable to
    // the empty text removes it.
    std::string directory;
    if (WEnv::WGetEnv("MESSAGE_PATH", directory) != WEnv::EnvSet) return catalogFile;
    return directory + "/" + catalogFile;
}

}  // namespace

Message::Message(const std::string& catalogFile) : printCode(true) {
    if (!Append(catalogFile)) std::cerr << "Message file " + catalogFile + " is invalid" << std::endl;
}

Message::~Message() = default;

bool Message::Append(const std::string& catalogFile) {
    if (catalogFile.empty()) return true;
    return SingleMapFileMT::Instance()->AppendMap(catalogPath(catalogFile));
}

bool Message::HasEntry(const std::string& key) const { return SingleMapFileMT::Instance()->HasEntry(key); }

std::uint16_t Message::GetArgumentsNumber(const std::string& key) const {
    SingleMapFileMT* catalog = SingleMapFileMT::Instance();
    if (!catalog->HasEntry(key)) return 0;
    return FormatString((*catalog)[key]).GetArgumentsNumber();
}

Message& Message::operator[](const std::string& key) {
    std::string text = printCode ? key + " " : std::string();
    text += (*SingleMapFileMT::Instance())[key];
    Assign(text);
    return *this;
}

Message& Message::operator<<(const std::string& argument) {
    insertArgument(argument);
    return *this;
}

Message& Message::operator<<(const char* argument) {
    FormatString::operator<<(argument);
    return *this;
}

Message& Message::operator<<(char argument) {
    FormatString::operator<<(argument);
    return *this;
}

Message& Message::operator<<(int argument) {
    FormatString::operator<<(argument);
    return *this;
}

Message& Message::operator<<(long argument) {
    FormatString::operator<<(argument);
    return *this;
}

Message& Message::operator<<(const QIBError& error) {
    return *this << error.What() << error.Code() << error.Severity() << error.Where();
}

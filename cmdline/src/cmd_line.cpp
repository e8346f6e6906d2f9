// cmdline/src/cmd_line.cpp
// The command-line tokenizer. Works in place on its own copy of the text.
#include <vum-qib-osl/cmdline/cmd_line.h>

#include <cctype>
#include <cstring>
#include <string>

namespace {

constexpr char kBlanks[] = " \t";
constexpr char kTokenEnd[] = "= \t";

char* copyText(const char* text, std::size_t size) {
    char* copy = new char[size + 1];
    std::memcpy(copy, text, size);
    copy[size] = '\0';
    return copy;
}

}  // namespace

CmdLine::CmdLine(const char* text) {
    line_ = text == nullptr ? copyText("", 0) : copyText(text, std::strlen(text));
    Reset();
}

CmdLine::CmdLine(int argc, char* const argv[]) {
    std::string text;
    for (int i = 1; i < argc; ++i) {
        text += ' ';
        if (argv[i] != nullptr) text += argv[i];
    }
    line_ = copyText(text.data(), text.size());
    Reset();
}

CmdLine::CmdLine(const CmdLine& other) : line_(nullptr) { *this = other; }

CmdLine& CmdLine::operator=(const CmdLine& other) {
    if (this == &other) return *this;
    // A buffer of our own, with the scanning pointers moved over to it at the same offsets.
    const std::size_t size = std::strlen(other.line_);
    char* line = copyText(other.line_, size);
    delete[] line_;
    line_ = line;
    rest_ = line_ + (other.rest_ - other.line_);
    cursor_ = line_ + (other.cursor_ - other.line_);
    kind_ = other.kind_;
    length_ = other.length_;
    std::memcpy(token_, other.token_, sizeof token_);
    return *this;
}

CmdLine::~CmdLine() { delete[] line_; }

void CmdLine::Reset() {
    rest_ = line_;
    cursor_ = rest_;
    length_ = 0;
    kind_ = tkNone;
    token_[0] = '\0';
}

CmdLine::TKind CmdLine::NextToken(bool compact) {
    if (kind_ == tkEnd) return tkEnd;
    char* next = cursor_ + length_;
    if (compact) {
        // Source and destination overlap within the buffer: strcpy would be undefined here.
        std::memmove(rest_, next, std::strlen(next) + 1);
        cursor_ = rest_;
    } else {
        cursor_ = next;
        rest_ = next;
    }
    cursor_ += std::strspn(cursor_, kBlanks);
    switch (*cursor_) {
        case '\0':
            kind_ = tkEnd;
            break;
        case '-':
            kind_ = tkOption;
            ++cursor_;
            break;
        case '=':
            kind_ = tkValue;
            ++cursor_;
            break;
        default:
            kind_ = tkWord;
            break;
    }
    cursor_ += std::strspn(cursor_, kBlanks);
    length_ = static_cast<std::int32_t>(std::strcspn(cursor_, kTokenEnd));
    return kind_;
}

char* CmdLine::CurrentToken() {
    std::memset(token_, 0, sizeof token_);
    const std::size_t size = length_ < kTokenSize ? static_cast<std::size_t>(length_) : kTokenSize - 1;
    std::memcpy(token_, cursor_, size);
    if (kind_ == tkOption) {
        token_[0] = static_cast<char>(std::toupper(static_cast<unsigned char>(token_[0])));
    }
    return token_;
}

// log/src/channel.cpp
// The channel base with its per-channel filter, and the function channel.
#include <vum-qib-osl/log/channel.h>

#include <vum-qib-osl/ini/ini.h>

#include <algorithm>
#include <vector>

namespace {

std::vector<std::string> splitAtCommaBlank(const std::string& text) {
    std::vector<std::string> parts;
    std::size_t start = 0;
    while (true) {
        std::size_t sep = text.find(", ", start);
        parts.push_back(text.substr(start, sep - start));
        if (sep == std::string::npos) break;
        start = sep + 2;
    }
    return parts;
}

bool contains(const std::vector<std::string>& list, const std::string& item) {
    return std::find(list.begin(), list.end(), item) != list.end();
}

}  // namespace

CChannel::~CChannel() = default;

void CChannel::Configure(Ini& ini, const std::string& group) {
    level_ = StringToSev(ini.GetString(group, "level", "none", nullptr));
    category_ = ini.GetString(group, "category", "", nullptr);
}

bool CChannel::IsHiger(const CLogMsg& msg) const {
    if (msg.GetSevirity() < level_) return false;
    const std::string& category = msg.GetCategory();
    if (category.empty() && category_.empty()) return true;
    if (category == category_ || category_ == "*") return true;
    if (category_.find(',') != std::string::npos) {
        const std::vector<std::string> list = splitAtCommaBlank(category_);
        if (contains(list, category.empty() ? std::string("NONE") : category)) return true;
        if (category_[0] == '*') return !contains(list, "~" + category);
    }
    return false;
}

CChannelFunc::~CChannelFunc() = default;

void CChannelFunc::Write(CLogMsg& msg) {
    if (fn_ != nullptr && IsHiger(msg)) fn_(msg.c_str());
}

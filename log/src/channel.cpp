// log/src/channel.cpp
// The channel base with its per-channel filter, and the function channel.
#include <vum-qib-osl/log/channel.h>

#include <string_view>

CChannel::~CChannel() = default;

void CChannel::SetCategory(std::string category) {
    category_ = std::move(category);
    categoryList_.clear();
    if (category_.find(',') == std::string::npos) return;
    std::size_t start = 0;
    while (true) {
        std::size_t sep = category_.find(", ", start);
        categoryList_.push_back(category_.substr(start, sep - start));
        if (sep == std::string::npos) break;
        start = sep + 2;
    }
}

bool CChannel::IsHiger(const CLogMsg& msg) const {
    if (msg.GetSevirity() < level_) return false;
    const std::string& category = msg.GetCategory();
    if (category.empty() && category_.empty()) return true;
    if (category == category_ || category_ == "*") return true;
    if (categoryList_.empty()) return false;
    const std::string_view wanted = category.empty() ? std::string_view("NONE") : std::string_view(category);
    bool excluded = false;
    for (const std::string& entry : categoryList_) {
        if (entry == wanted) return true;
        excluded = excluded || (entry.size() == category.size() + 1 && entry[0] == '~' &&
                                entry.compare(1, std::string::npos, category) == 0);
    }
    return category_[0] == '*' && !excluded;
}

CChannelFunc::~CChannelFunc() = default;

void CChannelFunc::Write(CLogMsg& msg) {
    if (fn_ != nullptr && IsHiger(msg)) fn_(msg.c_str());
}

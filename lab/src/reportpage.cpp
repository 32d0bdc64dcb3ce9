#include "reportpage.h"

#include "fault.h"

#include <nlohmann/json.hpp>
#include <string_view>

namespace krlab {

/// The page without data, written by lab/embed.cmake.
extern const std::string_view emptyPage;

namespace {

// Text that came out of files may hold what ends a script element: JSON knows another way to write that sign.
std::string scriptText(const nlohmann::json& data) {
    std::string text;
    for (const char c : data.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace)) {
        if (c == '<') {
            text += "\\u003c";
        } else {
            text += c;
        }
    }
    return text;
}

std::string htmlText(const std::string& text) {
    std::string html;
    for (const char c : text) {
        html += c == '<' ? "&lt;" : c == '&' ? "&amp;" : std::string(1, c);
    }
    return html;
}

void put(std::string& page, std::string_view mark, const std::string& text) {
    const size_t at = page.find(mark);
    if (at == std::string::npos) {
        throw Fault("the page in this program has no place for " + std::string(mark));
    }
    page.replace(at, mark.size(), text);
}

} // namespace

std::string reportPage(const nlohmann::json& data) {
    std::string page(emptyPage);
    // The title stands before the data: whatever either of them holds, each mark is the first of its kind.
    put(page, "@data@", scriptText(data));
    put(page, "@title@", htmlText(data.at("title").get<std::string>()));
    return page;
}

} // namespace krlab

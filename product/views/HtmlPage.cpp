#include "HtmlPage.h"

#include "HtmlParts.h"

#include <pugixml.hpp>

namespace views::html {
namespace {

// A browser takes a style sheet as it is, whatever would have to be escaped in XML: it stands beside the
// markup.
constexpr const char* kBegin = R"html(<!DOCTYPE html>
<html lang="en" xmlns="http://www.w3.org/1999/xhtml"><head><meta charset="utf-8"/>
<meta name="viewport" content="width=device-width, initial-scale=1"/>
<meta name="color-scheme" content="light dark"/>
)html";

/// Takes what the library writes. A stream would keep to itself that there is no memory left.
struct Writer final : pugi::xml_writer {
    void write(const void* data, std::size_t size) override {
        text.append(static_cast<const char*>(data), size);
    }
    std::string text;
};

}  // namespace

std::string PageOf(const std::string& title, const std::function<void(Element body)>& fill,
                   const std::string& script) {
    constexpr unsigned kAsItIs = pugi::format_raw | pugi::format_no_declaration;
    pugi::xml_document head;
    pugi::xml_document body;
    Element(head).Add("title", title);
    if (!script.empty()) {
        Element(head).Add("script", " ", {{"src", script}, {"defer", "defer"}});  // Never <script/>.
    }
    fill(Element(body).Add("body"));
    Writer page;
    page.text = kBegin;
    head.save(page, "", kAsItIs);
    page.text.append("<style>").append(StyleSheet()).append("</style>\n</head>\n");
    body.save(page, "", kAsItIs);
    return page.text + "</html>\n";
}

}  // namespace views::html

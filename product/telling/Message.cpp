#include "Message.h"

#include "basics/Text.h"
#include "basics/Words.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace telling {
namespace {

using FieldsJson = nlohmann::ordered_json;

constexpr std::size_t kMostOfAField = 8192;
constexpr std::size_t kMostOfALine = 300;

std::string FieldName(const std::string& key) {
    std::string name = "MNGSRVRAID_" + key;
    std::transform(name.begin(), name.end(), name.begin(), [](char letter) {
        return 'a' <= letter && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    return name;
}

}  // namespace

std::string JsonLineOf(const Message& message) {
    std::string line = watch::JsonOf(message.event, message.host);
    if (message.dropped > 0) {
        line.pop_back();
        line += ",\"dropped\":" + std::to_string(message.dropped) + '}';
    }
    return line + '\n';
}

std::vector<std::string> FieldsOf(const Message& message) {
    std::vector<std::string> fields;
    const FieldsJson object = FieldsJson::parse(JsonLineOf(message));
    for (const auto& [key, value] : object.items()) {
        const std::string text = value.is_string() ? value.get<std::string>()
                                 : value.is_null() ? ""
                                                   : value.dump();
        fields.push_back(FieldName(key) + '=' +
                         basics::Printable(std::string_view(text).substr(0, kMostOfAField)));
    }
    return fields;
}

std::string TitleOf(const Message& message) {
    return basics::Printable((message.host.empty() ? "" : message.host + ": ") +
                             watch::Describe(message.event));
}

std::string DroppedNote(const Message& message) {
    if (message.dropped == 0) {
        return "";
    }
    const std::string events = message.dropped == 1
                                   ? "1 event before this one was"
                                   : std::to_string(message.dropped) + " events before this one were";
    return events + " dropped, because too many waited for this channel.";
}

std::string OneShortLine(std::string_view text) {
    const std::string_view front = basics::Trimmed(text).substr(0, kMostOfALine + 1);
    return basics::Shortened(basics::Printable(front), kMostOfALine);
}

std::string LastLineOf(const std::string& text) {
    std::string_view last;
    for (const std::string_view line : basics::Words(text, "\r\n")) {
        const std::string_view trimmed = basics::Trimmed(line);
        last = trimmed.empty() ? last : trimmed;
    }
    return OneShortLine(last);
}

}  // namespace telling

#include "MailText.h"

#include "basics/Text.h"
#include "basics/Time.h"
#include "basics/Words.h"

#include <algorithm>
#include <vector>

namespace telling {
namespace {

using basics::Printable;

constexpr std::size_t kLongestLine = 76;

bool IsAscii(std::string_view text) {
    return std::all_of(text.begin(), text.end(),
                       [](char character) { return ' ' <= character && character <= '~'; });
}

bool HasOnly(std::string_view text, std::string_view others) {
    return std::all_of(text.begin(), text.end(), [others](char character) {
        return basics::IsAlphanumeric(character) || others.find(character) != std::string_view::npos;
    });
}

// Words with dots between them.
bool IsDotted(std::string_view text, std::string_view others) {
    return !text.empty() && !text.starts_with('.') && !text.ends_with('.') &&
           text.find("..") == std::string_view::npos && HasOnly(text, std::string(others) + '.');
}

std::string Encoded(char character) {
    std::string code = "=" + basics::Digits(static_cast<unsigned char>(character), 2, 16);
    std::transform(code.begin(), code.end(), code.begin(), [](char digit) {
        return 'a' <= digit && digit <= 'f' ? static_cast<char>(digit - 'a' + 'A') : digit;
    });
    return code;
}

bool ContinuesCharacter(char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

// Words of "=?UTF-8?Q?...?=", each of whole characters.
std::string EncodedWords(std::string_view text) {
    constexpr std::string_view kBegin = "=?UTF-8?Q?";
    constexpr std::string_view kEnd = "?=";
    constexpr std::size_t kRoom =
        kLongestLine - 1 - kBegin.size() - kEnd.size() - std::string_view("Subject: ").size();
    std::string words(kBegin);
    for (std::size_t used = 0; !text.empty();) {
        std::size_t size = 1;
        while (size < text.size() && ContinuesCharacter(text[size])) {
            ++size;
        }
        std::string code;
        for (const char byte : text.substr(0, size)) {
            code += byte == ' ' ? "_" : basics::IsAlphanumeric(byte) ? std::string(1, byte) : Encoded(byte);
        }
        if (used + code.size() > kRoom) {
            words.append(kEnd).append("\n ").append(kBegin);
            used = 0;
        }
        words += code;
        used += code.size();
        text.remove_prefix(size);
    }
    return words.append(kEnd);
}

// Broken before words, where a line gets long.
std::string Folded(const std::string& header) {
    std::string folded;
    std::size_t column = 0;
    for (const std::string_view word : basics::Words(header)) {
        const bool isFirst = folded.empty();
        if (!isFirst && column + 1 + word.size() > kLongestLine) {
            folded += '\n';
            column = 0;
        }
        folded.append(isFirst ? "" : " ").append(word);
        column += word.size() + (isFirst ? 0 : 1);
    }
    return folded;
}

std::string SubjectOf(const Message& message) {
    constexpr std::size_t kMostColumns = 200;
    const std::string title = basics::Shortened(TitleOf(message), kMostColumns);
    const bool isPlain = IsAscii(title) && title.find("=?") == std::string::npos;
    return isPlain ? Folded("Subject: " + title) : "Subject: " + EncodedWords(title);
}

// Quoted-printable, which stays legible: lines of at most 76 columns, with nothing in them but ASCII.
std::string QuotedPrintable(std::string_view text) {
    std::string quoted;
    for (std::string_view rest = text; !rest.empty();) {
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        std::size_t column = 0;
        for (std::size_t place = 0; place < end; ++place) {
            const char character = rest[place];
            const bool isPlain = ' ' <= character && character <= '~' && character != '=' &&
                                 !(character == ' ' && place + 1 == end);
            const std::string code = isPlain ? std::string(1, character) : Encoded(character);
            if (column + code.size() >= kLongestLine) {
                quoted += "=\n";
                column = 0;
            }
            quoted += code;
            column += code.size();
        }
        quoted += '\n';
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return quoted;
}

std::string Row(const char* name, const std::string& value) {
    constexpr std::size_t kColumns = 16;
    return value.empty() ? "" : basics::PadRight(name, kColumns) + Printable(value) + '\n';
}

std::string BodyOf(const Message& message) {
    const watch::Event& event = message.event;
    std::string level(NameOf(event.level));
    if (event.before != event.level) {
        level.append(", until now ").append(NameOf(event.before));
    }
    std::string body = Printable(watch::Describe(event)) + '\n';
    body += event.advice.empty() ? "" : '\n' + Printable(event.advice) + '\n';
    body += '\n' + Row("Server:", message.host) + Row("Time:", basics::UtcText(event.at)) +
            Row("Level:", level) + Row("Drive:", inventory::IdentityOf(event.about)) +
            Row("Event:", event.id);
    const std::string note = DroppedNote(message);
    return body + (note.empty() ? "" : '\n' + note + '\n');
}

// A name that another machine's could be, or none.
std::string RightPartFor(const std::string& host) {
    return IsDotted(host, "-") ? host : "localhost";
}

std::string LeftPartFor(const std::string& id) {
    return IsDotted(id, "-_") ? id : "unknown";
}

}  // namespace

bool IsMailAddress(std::string_view address) {
    constexpr std::size_t kLongest = 254;
    const std::size_t at = address.rfind('@');
    const std::string_view local = address.substr(0, at);
    const bool isDomainGood = at == std::string_view::npos || IsDotted(address.substr(at + 1), "-");
    return address.size() <= kLongest && !address.starts_with('-') &&
           IsDotted(local, "!#$%&'*+-/=?^_`{|}~") && isDomainGood;
}

std::string MailTextOf(const Mail& mail, const Message& message) {
    std::vector<std::string> lines;
    lines.push_back(Folded("To: " + basics::Joined(mail.recipients)));
    if (!mail.sender.empty()) {
        lines.push_back("From: " + mail.sender);
    }
    lines.push_back(SubjectOf(message));
    lines.push_back("Date: " + basics::UtcText(message.event.at, "%a, %d %b %Y %H:%M:%S +0000"));
    lines.push_back("Message-ID: <" + LeftPartFor(message.event.id) + '@' + RightPartFor(message.host) + '>');
    lines.insert(lines.end(),
                 {"Auto-Submitted: auto-generated", "MIME-Version: 1.0",
                  "Content-Type: text/plain; charset=UTF-8", "Content-Transfer-Encoding: quoted-printable"});
    return basics::Joined(lines, "\n") + "\n\n" + QuotedPrintable(BodyOf(message));
}

}  // namespace telling

#include "Pages.h"

#include "basics/Time.h"
#include "http/Status.h"
#include "views/Views.h"

#include <gnutls/crypto.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace doors {
namespace {

constexpr const char* kLivePath = "/live.js";

// The page is fetched anew when the server sends word; what is open stays open, and nothing moves under the
// reader's eyes.
constexpr const char* kScript = R"js("use strict";
(() => {
  const refresh = async () => {
    const answer = await fetch("/", { headers: { Accept: "text/html" }, credentials: "same-origin" });
    if (!answer.ok) throw new Error(answer.statusText);
    const next = new DOMParser().parseFromString(await answer.text(), "text/html");
    const open = [...document.querySelectorAll("details")].map((each) => each.open);
    const details = [...next.querySelectorAll("details")];
    if (details.length === open.length) details.forEach((each, index) => { each.open = open[index]; });
    document.title = next.title;
    document.body.replaceWith(next.body);
    mark(true);
  };
  const mark = (isLive) => {
    document.querySelector(".live")?.remove();
    const word = document.createElement("p");
    word.className = "note live";
    word.setAttribute("role", "status");
    word.textContent = isLive ? "Live: this page follows the server." : "Not connected: this page may be old.";
    document.querySelector("header")?.append(word);
  };
  const news = new EventSource("/live");
  const follow = () => { refresh().catch(() => mark(false)); };
  news.addEventListener("board", follow);
  news.onopen = follow;  // What was missed meanwhile is nobody's event.
  news.onerror = () => mark(false);
})();
)js";

/// The style sheet stands in the page; a browser is told which one it may use by its digest.
std::string PolicyFor(std::string_view page) {
    constexpr std::string_view kBegin = "<style>";
    constexpr std::string_view kEnd = "</style>";
    constexpr std::size_t kDigest = 32;
    std::string style = "'none'";
    const std::size_t begin = page.find(kBegin);
    const std::size_t end = page.find(kEnd);
    if (begin != std::string_view::npos && end != std::string_view::npos) {
        const std::string_view text = page.substr(begin + kBegin.size(), end - begin - kBegin.size());
        std::array<unsigned char, kDigest> digest{};
        gnutls_datum_t encoded{};
        const gnutls_datum_t bytes{digest.data(), static_cast<unsigned>(digest.size())};
        if (gnutls_hash_fast(GNUTLS_DIG_SHA256, text.data(), text.size(), digest.data()) == 0 &&
            gnutls_base64_encode2(&bytes, &encoded) == 0) {
            style = "'sha256-" + std::string(reinterpret_cast<const char*>(encoded.data), encoded.size) + "'";
            gnutls_free(encoded.data);
        }
    }
    return "default-src 'none'; script-src 'self'; connect-src 'self'; style-src " + style +
           "; base-uri 'none'; form-action 'none'; frame-ancestors 'none'";
}

/// What the alarms say of parts that the answer does not tell of.
std::vector<inventory::Finding> StandingOf(const board::Board& board) {
    std::vector<inventory::Finding> standing;
    for (const board::StandingAlarm& alarm : board.alarms) {
        if (alarm.isVanished) {
            standing.push_back(alarm.finding);
        }
    }
    return standing;
}

/// What happened lately, as far as the board tells; of counters it tells nothing.
history::ServerHistory PastOf(const board::Board& board) {
    constexpr std::chrono::hours kShown{30 * 24};
    const board::TimePoint until = *board.snapshot->takenAt;
    history::ServerHistory past{.since = until - kShown, .until = until};
    for (const board::NumberedEvent& each : board.events) {
        if (each.event.at >= past.since) {
            past.events.push_back({each.number, each.event});
        }
    }
    return past;
}

views::Watching WatchingOf(const board::Board& board) {
    views::Watching watching{.standing = StandingOf(board), .script = kLivePath};
    if (board.inquiry) {
        watching.askedAt = board.inquiry->at;
        watching.failure = board.inquiry->failure;
        watching.failuresInARow = board.inquiry->failuresInARow;
    }
    return watching;
}

}  // namespace

http::Response PageOf(std::string page) {
    const std::string policy = PolicyFor(page);
    http::Response response = http::MakeResponse(http::kOk, "text/html; charset=utf-8", std::move(page));
    response.headers.emplace_back("Content-Security-Policy", policy);
    return response;
}

const http::Response* Pages::Find(const std::string& path) {
    constexpr std::array kPaths = {"/", "/metrics", "/raid.json", "/raid.xml"};
    if (std::find(kPaths.begin(), kPaths.end(), path) == kPaths.end()) {
        return nullptr;
    }
    const auto found = m_Made.find(path);
    return found != m_Made.end() ? &found->second : &m_Made.emplace(path, Make(path)).first->second;
}

http::Response Pages::Make(const std::string& path) const {
    if (!m_Board || !m_Board->snapshot) {
        const std::string why =
            m_Board && m_Board->inquiry ? ": " + m_Board->inquiry->failure : " yet; it is being asked";
        return http::MakeWords(http::kServiceUnavailable, "The server has not answered" + why + ".");
    }
    const inventory::Snapshot& snapshot = *m_Board->snapshot;
    const views::Watching watching = WatchingOf(*m_Board);
    if (path == "/metrics") {
        return http::MakeResponse(http::kOk, "text/plain; version=0.0.4; charset=utf-8",
                                  views::Prometheus(snapshot, &watching));
    }
    if (path == "/raid.json") {
        return http::MakeResponse(http::kOk, "application/json", views::Json(snapshot));
    }
    if (path == "/raid.xml") {
        return {http::kOk, {{"Content-Type", "application/xml; charset=utf-8"}}, m_Board->document};
    }
    const history::ServerHistory past = PastOf(*m_Board);
    return PageOf(views::Html(snapshot, &past, &watching));
}

const http::Response& LiveScript() {
    static const http::Response script =
        http::MakeResponse(http::kOk, "text/javascript; charset=utf-8", kScript);
    return script;
}

http::Response HealthOf(const board::Board* board, std::chrono::seconds interval, board::TimePoint now) {
    constexpr int kIntervals = 3;
    if (board == nullptr || !board->inquiry) {
        return http::MakeWords(http::kServiceUnavailable, "the server has not been asked yet");
    }
    if (!board->inquiry->failure.empty()) {
        return http::MakeWords(http::kServiceUnavailable, "the server could not be asked");
    }
    if (now - board->inquiry->at > kIntervals * interval) {
        return http::MakeWords(http::kServiceUnavailable,
                               "the last inquiry was at " + basics::UtcText(board->inquiry->at));
    }
    return http::MakeWords(http::kOk, "ok");
}

void Secure(http::Response& response) {
    const auto add = [&](const char* name, const char* value) {
        if (http::Find(response.headers, name) == nullptr) {
            response.headers.emplace_back(name, value);
        }
    };
    add("X-Content-Type-Options", "nosniff");
    add("Cache-Control", "no-cache");
    add("Referrer-Policy", "no-referrer");
    add("Content-Security-Policy", "default-src 'none'; frame-ancestors 'none'");
}

}  // namespace doors

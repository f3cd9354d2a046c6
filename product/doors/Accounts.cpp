#include "Accounts.h"

#include "basics/Failure.h"
#include "basics/Words.h"

#include <arpa/inet.h>
#include <crypt.h>
#include <gnutls/crypto.h>
#include <gnutls/gnutls.h>
#include <netinet/in.h>

#include <algorithm>
#include <array>
#include <memory>

namespace doors {
namespace {

using basics::Failure;

constexpr std::chrono::minutes kKnownFor{5};
constexpr std::chrono::minutes kSessionLasts{30};
constexpr std::size_t kMostSessions = 64;
constexpr std::size_t kMostOfAnAccount = 16;
constexpr std::size_t kMostKnown = 256;
constexpr std::size_t kMostName = 64;
constexpr std::size_t kMostAddresses = 4096;

// Of no password: for accounts that are not there, so that they take as long as the others.
constexpr const char* kNobodysHash =
    "$y$j9T$QSy3M4RXIjJCtDAsKvyX4/$lXzDFxBWBVbOFNxSjVLUFVYHMHSyCFm5OlGrlPKwHd1";

bool IsName(std::string_view text) {
    return !text.empty() && text.size() <= kMostName && std::all_of(text.begin(), text.end(), [](char each) {
        return (each >= 'a' && each <= 'z') || (each >= 'A' && each <= 'Z') || (each >= '0' && each <= '9') ||
               each == '-' || each == '_' || each == '.' || each == '@';
    });
}

std::string Hashed(const std::string& password, const std::string& setting) {
    const auto data = std::make_unique<crypt_data>();
    const char* const hash =
        ::crypt_rn(password.c_str(), setting.c_str(), data.get(), static_cast<int>(sizeof(crypt_data)));
    std::string text = hash == nullptr ? "" : hash;
    gnutls_memset(data.get(), 0, sizeof(crypt_data));  // Not to be left out, as that of the language is.
    return text;
}

/// Takes as long whatever the difference is.
bool IsSame(std::string_view one, std::string_view other) {
    return one.size() == other.size() && gnutls_memcmp(one.data(), other.data(), one.size()) == 0;
}

std::string RandomBytes(std::size_t size) {
    std::string bytes(size, '\0');
    if (gnutls_rnd(GNUTLS_RND_KEY, bytes.data(), size) != 0) {
        throw Failure(Failure::Kind::Surroundings, "there are no random numbers");
    }
    return bytes;
}

std::string Hexadecimal(std::string_view bytes) {
    std::string text;
    for (const char byte : bytes) {
        text += basics::Digits(static_cast<unsigned char>(byte), 2, 16);
    }
    return text;
}

/// Who is taken for one client: "192.0.2.7", or the first half of an address of IPv6.
std::string NeighbourhoodOf(const std::string& address) {
    constexpr std::size_t kNetSize = 8;
    in6_addr six{};
    return ::inet_pton(AF_INET6, address.c_str(), &six) == 1
               ? std::string(reinterpret_cast<const char*>(six.s6_addr), kNetSize)
               : address;
}

}  // namespace

AccountList AccountList::Read(std::string_view text) {
    AccountList list;
    unsigned number = 0;
    while (!text.empty()) {
        ++number;
        std::string_view line = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(line.size() + 1, text.size()));
        if (!line.empty() && line.back() == '\r') {
            line.remove_suffix(1);
        }
        if (line.empty() || line.front() == '#') {
            continue;
        }
        const std::size_t colon = std::min(line.find(':'), line.size());
        const std::string name(line.substr(0, colon));
        const std::string hash(line.substr(std::min(colon + 1, line.size())));
        const auto refuse = [number](const std::string& why) {
            throw Failure(Failure::Kind::Use, "line " + std::to_string(number) + ": " + why);
        };
        if (!IsName(name)) {
            refuse("a name has 1 to 64 letters, digits, \"-\", \"_\", \".\", \"@\"");
        }
        if (::crypt_checksalt(hash.c_str()) != CRYPT_SALT_OK) {
            refuse("the hash of " + name + " is of no kind that is safe; mngsrvraidd passwd makes one");
        }
        if (!list.m_Hashes.emplace(name, hash).second) {
            refuse(name + " is there twice");
        }
    }
    return list;
}

const std::string* AccountList::HashOf(const std::string& name) const {
    const auto found = m_Hashes.find(name);
    return found == m_Hashes.end() ? nullptr : &found->second;
}

std::string HashOf(const std::string& password) {
    std::array<char, CRYPT_GENSALT_OUTPUT_SIZE> setting{};
    if (::crypt_gensalt_rn("$y$", 0, nullptr, 0, setting.data(), static_cast<int>(setting.size())) ==
        nullptr) {
        throw Failure(Failure::Kind::Surroundings, "no salt can be made");
    }
    std::string hash = Hashed(password, setting.data());
    if (hash.empty() || hash.front() == '*') {
        throw Failure(Failure::Kind::Surroundings, "the password cannot be hashed");
    }
    return hash;
}

bool Accounts::Check(const std::string& name, const std::string& password) {
    const std::string* const known = m_List ? m_List->HashOf(name) : nullptr;
    const std::string& hash = known == nullptr ? kNobodysHash : *known;
    const bool isRight =
        IsSame(Hashed(password, hash), hash) && known != nullptr && password.find('\0') == std::string::npos;
    if (isRight) {
        const std::string digest = DigestOf(name, password);
        const std::lock_guard lock(m_Mutex);
        if (m_Checked.size() >= kMostKnown) {
            m_Checked.clear();
        }
        m_Checked[digest] = m_Now();
    }
    return isRight;
}

bool Accounts::IsKnown(const std::string& name, const std::string& password) {
    const std::string digest = DigestOf(name, password);
    const std::lock_guard lock(m_Mutex);
    const auto found = m_Checked.find(digest);
    return found != m_Checked.end() && m_Now() - found->second < kKnownFor;
}

// What is looked up by its digest tells nobody by the time that it takes how much of it was right.
std::string Accounts::DigestOf(std::string_view name, std::string_view secret) {
    constexpr std::size_t kSize = 32;
    std::string text;
    {
        const std::lock_guard lock(m_Mutex);
        if (m_Salt.empty()) {
            m_Salt = RandomBytes(kSize);
        }
        text = m_Salt;
    }
    text.append(name).append(1, '\0').append(secret);
    std::string digest(kSize, '\0');
    if (gnutls_hash_fast(GNUTLS_DIG_SHA256, text.data(), text.size(), digest.data()) != 0) {
        throw Failure(Failure::Kind::Surroundings, "nothing can be hashed");
    }
    return digest;
}

std::optional<redfish::Session> Accounts::WhoIs(std::string_view token) {
    const std::string digest = DigestOf("", token);
    const std::lock_guard lock(m_Mutex);
    ForgetOldSessions();
    const auto found = m_Sessions.find(digest);
    if (found == m_Sessions.end()) {
        return std::nullopt;
    }
    found->second.used = m_Now();
    return found->second.session;
}

bool Accounts::Has(const std::string& session) const {
    const std::lock_guard lock(m_Mutex);
    return std::any_of(m_Sessions.begin(), m_Sessions.end(), [&](const auto& each) {
        return each.second.session.id == session && m_Now() - each.second.used < kSessionLasts;
    });
}

void Accounts::ForgetOldSessions() {
    std::erase_if(m_Sessions,
                  [now = m_Now()](const auto& each) { return now - each.second.used >= kSessionLasts; });
}

// Clients that do not log out are many; nobody is to be kept out by those of his own, nor by another's.
void Accounts::MakeWayFor(const std::string& account) {
    std::size_t count = 0;
    auto oldest = m_Sessions.end();
    for (auto each = m_Sessions.begin(); each != m_Sessions.end(); ++each) {
        if (each->second.session.account == account) {
            ++count;
            oldest = oldest == m_Sessions.end() || each->second.used < oldest->second.used ? each : oldest;
        }
    }
    if (count >= kMostOfAnAccount) {
        m_Sessions.erase(oldest);
    }
}

std::variant<redfish::NewSession, redfish::SessionRefusal> Accounts::Create(const std::string& account,
                                                                            const std::string& password) {
    using Why = redfish::SessionRefusal::Why;
    if (!Check(account, password)) {
        return redfish::SessionRefusal{Why::NotProved};
    }
    constexpr std::size_t kTokenSize = 32;
    constexpr std::size_t kIdSize = 8;
    redfish::NewSession made;
    made.token = Hexadecimal(RandomBytes(kTokenSize));
    made.session = {Hexadecimal(RandomBytes(kIdSize)), account, std::chrono::system_clock::now()};
    const std::string digest = DigestOf("", made.token);
    const std::lock_guard lock(m_Mutex);
    ForgetOldSessions();
    MakeWayFor(account);
    if (m_Sessions.size() >= kMostSessions) {
        return redfish::SessionRefusal{Why::TooMany};
    }
    m_Sessions.emplace(digest, Kept{made.session, m_Now()});
    return made;
}

bool Accounts::End(const std::string& id) {
    const std::lock_guard lock(m_Mutex);
    return std::erase_if(m_Sessions, [&](const auto& each) { return each.second.session.id == id; }) > 0;
}

std::vector<redfish::Session> Accounts::List() const {
    const std::lock_guard lock(m_Mutex);
    std::vector<redfish::Session> sessions;
    for (const auto& [digest, kept] : m_Sessions) {
        if (m_Now() - kept.used < kSessionLasts) {
            sessions.push_back(kept.session);
        }
    }
    std::sort(sessions.begin(), sessions.end(),
              [](const redfish::Session& one, const redfish::Session& other) {
                  return std::pair(one.since, one.id) < std::pair(other.since, other.id);
              });
    return sessions;
}

std::chrono::seconds Patience::WaitOf(const std::string& address, Clock::time_point now) const {
    const std::lock_guard lock(m_Mutex);
    const auto found = m_Failures.find(NeighbourhoodOf(address));
    return found == m_Failures.end() || found->second.until <= now
               ? std::chrono::seconds(0)
               : std::chrono::ceil<std::chrono::seconds>(found->second.until - now);
}

// Whoever mistypes twice is not kept waiting; a program that guesses gets a few hundred tries a day.
void Patience::Failed(const std::string& address, Clock::time_point now) {
    constexpr unsigned kFree = 2;
    constexpr unsigned kMostDoublings = 8;
    static constexpr std::chrono::hours kForget{1};
    const std::lock_guard lock(m_Mutex);
    if (m_Failures.size() >= kMostAddresses) {
        std::erase_if(m_Failures, [now](const auto& each) { return now - each.second.last >= kForget; });
    }
    if (m_Failures.size() >= kMostAddresses) {
        m_Failures.erase(m_Failures.begin());
    }
    Failures& failures = m_Failures[NeighbourhoodOf(address)];
    if (failures.count > 0 && now - failures.last >= kForget) {
        failures.count = 0;
    }
    ++failures.count;
    failures.last = now;
    if (failures.count > kFree) {
        failures.until =
            now + std::chrono::seconds(1U << std::min(failures.count - kFree - 1, kMostDoublings));
    }
}

void Patience::Succeeded(const std::string& address) {
    const std::lock_guard lock(m_Mutex);
    m_Failures.erase(NeighbourhoodOf(address));
}

}  // namespace doors

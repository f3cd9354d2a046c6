#include "HttpPost.h"

#include "Rights.h"
#include "Url.h"
#include "basics/Descriptor.h"
#include "basics/Failure.h"
#include "basics/SavedFile.h"
#include "basics/Text.h"
#include "basics/Words.h"

#include <curl/curl.h>
#include <dlfcn.h>
#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace telling {
namespace {

/// libcurl, which takes more memory than all the rest of the service: it is there only where something is
/// posted, in whatever flavour the machine has.
class Curl final {
  public:
    Curl() {
        for (const char* const name : {"libcurl.so.4", "libcurl-gnutls.so.4"}) {
            m_Library = m_Library == nullptr ? ::dlopen(name, RTLD_NOW | RTLD_LOCAL) : m_Library;
        }
        if (m_Library == nullptr) {
            basics::FailSurroundings("libcurl cannot be loaded; install libcurl4 or libcurl3-gnutls");
        }
        Find(init, "curl_easy_init");
        Find(setOption, "curl_easy_setopt");
        Find(perform, "curl_easy_perform");
        Find(info, "curl_easy_getinfo");
        Find(wordsFor, "curl_easy_strerror");
        Find(append, "curl_slist_append");
    }

    decltype(&curl_easy_init) init = nullptr;
    decltype(&curl_easy_setopt) setOption = nullptr;
    decltype(&curl_easy_perform) perform = nullptr;
    decltype(&curl_easy_getinfo) info = nullptr;
    decltype(&curl_easy_strerror) wordsFor = nullptr;
    decltype(&curl_slist_append) append = nullptr;

  private:
    template <typename Function>
    void Find(Function& function, const char* name) {
        function = reinterpret_cast<Function>(::dlsym(m_Library, name));
        if (function == nullptr) {
            basics::FailSurroundings("libcurl has no " + std::string(name) + "; install a newer one");
        }
    }

    void* m_Library = nullptr;
};

// What root alone may read is to be read by a process that is nobody.
basics::Descriptor CopyOf(const std::string& path) {
    constexpr std::size_t kMostMebibytes = 16;
    const std::string content = basics::ReadFile(path, kMostMebibytes);
    basics::Descriptor copy(::memfd_create("certificates", MFD_CLOEXEC));
    if (!copy.IsOpen() || basics::WriteWhole(copy.Number(), content) != 0) {
        basics::FailSurroundings("no memory for certificates: " + basics::ErrorText(errno));
    }
    return copy;
}

/// One POST, in a process that ends with it.
class Exchange final {
  public:
    Exchange(const Http& http, const Message& message, const Errand::Say& say)
        : m_Body(JsonLineOf(message)), m_Say(say), m_Handle(m_Curl.init()) {
        if (m_Handle == nullptr) {
            basics::FailSurroundings("libcurl cannot be used");
        }
        m_Body.pop_back();
        AddHeader("Content-Type: application/json");
        AddHeader("Idempotency-Key: " + message.event.id);
        AddHeader("Expect:");
        for (const std::string& header : HeadersOf(http)) {
            AddHeader(header);
        }
        Set(CURLOPT_URL, http.url.c_str());
        Set(CURLOPT_USERAGENT, "mngsrvraidd");
        Set(CURLOPT_NOSIGNAL, 1L);
        Set(CURLOPT_ERRORBUFFER, m_Error.data());
        Set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(m_Body.size()));
        Set(CURLOPT_POSTFIELDS, m_Body.data());
        Set(CURLOPT_FOLLOWLOCATION, 0L);
        Set(CURLOPT_WRITEFUNCTION, &Exchange::TakeBody);
        Set(CURLOPT_WRITEDATA, this);
        Set(CURLOPT_PREREQFUNCTION, &Exchange::TellConnected);
        Set(CURLOPT_PREREQDATA, this);
        SetTrust(http);
    }

    bool Run() {
        m_Say("no connection came about");
        Set(CURLOPT_HTTPHEADER, m_Headers);
        const CURLcode result = m_Curl.perform(m_Handle);
        long status = 0;
        m_Curl.info(m_Handle, CURLINFO_RESPONSE_CODE, &status);
        const bool isAnswered = result == CURLE_OK || result == CURLE_WRITE_ERROR;
        constexpr long kGood = 200;
        constexpr long kGoodNoLonger = 300;
        const bool isGood = isAnswered && kGood <= status && status < kGoodNoLonger;
        m_Say(isAnswered ? WordsForStatus(status, isGood) : WordsForError(result));
        return isGood;
    }

  private:
    template <typename Value>
    void Set(CURLoption option, Value value) {
        const CURLcode result = m_Curl.setOption(m_Handle, option, value);
        if (result != CURLE_OK) {
            basics::FailSurroundings("libcurl cannot be used: " + std::string(m_Curl.wordsFor(result)));
        }
    }

    void AddHeader(const std::string& header) { m_Headers = m_Curl.append(m_Headers, header.c_str()); }

    void SetTrust(const Http& http) {
        const bool isSecure = Url::From(http.url).isSecure;
        Set(CURLOPT_PROTOCOLS_STR, isSecure ? "https" : "http");
        Set(CURLOPT_SSL_VERIFYPEER, 1L);
        Set(CURLOPT_SSL_VERIFYHOST, 2L);
        Set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
        if (!isSecure) {
            Set(CURLOPT_NOPROXY, "*");  // What is not encrypted goes nowhere else.
        }
        if (!http.authorityFile.empty()) {
            m_Authorities = CopyOf(http.authorityFile);
            Set(CURLOPT_CAINFO, ("/proc/self/fd/" + std::to_string(m_Authorities.Number())).c_str());
            Set(CURLOPT_CAPATH, static_cast<const char*>(nullptr));  // Else the system's count as well.
        }
    }

    static std::size_t TakeBody(char* text, std::size_t /*one*/, std::size_t size, void* self) {
        constexpr std::size_t kMostOfABody = 65536;
        std::string& body = static_cast<Exchange*>(self)->m_Answer;
        body.append(text, size);
        return body.size() > kMostOfABody ? 0 : size;  // Enough is known.
    }

    static int TellConnected(void* self, char* address, char* /*own*/, int /*port*/, int /*ownPort*/) {
        static_cast<Exchange*>(self)->m_Say("connected to " + std::string(address) +
                                            ", but it did not answer");
        return CURL_PREREQFUNC_OK;
    }

    [[nodiscard]] std::string WordsForStatus(long status, bool isGood) {
        std::string words = "HTTP " + std::to_string(status);
        char* target = nullptr;
        m_Curl.info(m_Handle, CURLINFO_REDIRECT_URL, &target);
        if (target != nullptr) {
            return words + ", which is a redirection to " + OneShortLine(target) +
                   "; name the address that is meant";
        }
        const std::string said = OneShortLine(m_Answer);
        return words + (isGood || said.empty() ? "" : ": " + said);
    }

    [[nodiscard]] std::string WordsForError(CURLcode result) {
        const std::string words = OneShortLine(m_Error.data());
        return words.empty() ? m_Curl.wordsFor(result) : words;
    }

    Curl m_Curl;
    std::string m_Body, m_Answer;
    basics::Descriptor m_Authorities;
    const Errand::Say& m_Say;
    std::array<char, CURL_ERROR_SIZE> m_Error{};
    CURL* m_Handle;
    curl_slist* m_Headers = nullptr;
};

bool IsNameOfAHeader(std::string_view name) {
    constexpr std::string_view kOthers = "!#$%&'*+-.^_`|~";
    return !name.empty() && std::all_of(name.begin(), name.end(), [&](char character) {
        return basics::IsAlphanumeric(character) || kOthers.find(character) != std::string_view::npos;
    });
}

}  // namespace

std::string WrongWithHeader(const std::string& line) {
    constexpr std::string_view kOurs[] = {"Content-Type",    "Content-Length", "Transfer-Encoding",
                                          "Idempotency-Key", "Expect",         "Host"};
    const std::size_t colon = std::min(line.find(':'), line.size());
    const std::string name = line.substr(0, colon);
    if (colon == line.size() || !IsNameOfAHeader(name) || basics::Trimmed(line.substr(colon + 1)).empty()) {
        return "each is a line such as \"Authorization: Bearer 0123\"";
    }
    if (std::any_of(line.begin(), line.end(), [](char character) {
            return static_cast<unsigned char>(character) < ' ' || character == '\x7F';
        })) {
        return name + " holds a control character";
    }
    const bool isOurs = std::any_of(std::begin(kOurs), std::end(kOurs), [&name](std::string_view each) {
        return basics::IsSameWord(each, name);
    });
    return isOurs ? name + " is set by the service itself" : "";
}

std::vector<std::string> HeadersOf(const Http& http) {
    constexpr std::size_t kMostMebibytes = 1;
    std::vector<std::string> headers = http.headers;
    const std::string file =
        http.headersFile.empty() ? "" : basics::ReadFile(http.headersFile, kMostMebibytes);
    for (const std::string_view line : basics::Words(file, "\r\n")) {
        const std::string header(basics::Trimmed(line));
        if (header.empty() || header.starts_with('#')) {
            continue;
        }
        if (const std::string words = WrongWithHeader(header); !words.empty()) {
            basics::FailSurroundings(http.headersFile + ": " + words);
        }
        headers.push_back(header);
    }
    return headers;
}

bool Post(const Http& http, const Message& message, const Errand::Say& say) {
    Exchange exchange(http, message, say);
    GiveUpRights();
    return exchange.Run();
}

}  // namespace telling

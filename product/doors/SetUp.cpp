#include "SetUp.h"

#include "Accounts.h"
#include "basics/DocumentTarget.h"
#include "basics/Failure.h"
#include "basics/HostName.h"
#include "basics/SavedFile.h"

#include <gnutls/crypto.h>
#include <gnutls/gnutls.h>
#include <gnutls/x509.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <ctime>
#include <filesystem>
#include <memory>
#include <string_view>
#include <system_error>

namespace doors {
namespace {

namespace fs = std::filesystem;
using basics::Failure;

/// What is typed is not shown while it lives.
class Silence final {
  public:
    Silence() {
        if (::tcgetattr(STDIN_FILENO, &m_Before) == 0) {
            termios silent = m_Before;
            silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
            m_IsSilent = ::tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent) == 0;
        }
    }
    ~Silence() {
        if (m_IsSilent) {
            (void)::tcsetattr(STDIN_FILENO, TCSAFLUSH, &m_Before);
            (void)basics::WriteWhole(STDERR_FILENO, "\n");
        }
    }
    Silence(const Silence&) = delete;
    Silence& operator=(const Silence&) = delete;

  private:
    termios m_Before{};
    bool m_IsSilent = false;
};

std::string ReadLine() {
    constexpr std::size_t kMost = 1024;
    std::string line;
    char each = 0;
    while (line.size() < kMost && ::read(STDIN_FILENO, &each, 1) == 1 && each != '\n') {
        line += each;
    }
    return line;
}

std::string Ask(const char* question) {
    if (::isatty(STDIN_FILENO) == 0) {
        return ReadLine();
    }
    (void)basics::WriteWhole(STDERR_FILENO, question);
    const Silence silence;
    return ReadLine();
}

std::string AskForPassword() {
    std::string password = Ask("New password: ");
    if (::isatty(STDIN_FILENO) != 0 && Ask("The same again: ") != password) {
        throw Failure(Failure::Kind::Use, "the two are not the same");
    }
    if (password.empty() || password.find('\0') != std::string::npos) {
        throw Failure(Failure::Kind::Use, "a password is a line that is not empty");
    }
    return password;
}

/// The text with that line in the place of the account's, or behind the others.
std::string WithAccount(std::string_view text, const std::string& name, const std::string& line) {
    std::string changed;
    bool isThere = false;
    while (!text.empty()) {
        const std::string_view each = text.substr(0, text.find('\n'));
        text.remove_prefix(std::min(each.size() + 1, text.size()));
        const bool isIt = each.substr(0, name.size() + 1) == name + ':';
        changed.append(isIt ? std::string_view(line) : each).append(1, '\n');
        isThere = isThere || isIt;
    }
    return isThere ? changed : changed + line + '\n';
}

void StoreForOwnerAlone(const fs::path& file, const std::string& text) {
    const mode_t before = ::umask(S_IRWXG | S_IRWXO);
    basics::DocumentTarget(file.string()).Store(text);
    ::umask(before);
}

void Check(int result, const char* what) {
    if (result < 0) {
        throw Failure(Failure::Kind::Surroundings, std::string(what) + ": " + gnutls_strerror(result));
    }
}

struct Deinit {
    void operator()(gnutls_x509_privkey_t key) const noexcept { gnutls_x509_privkey_deinit(key); }
    void operator()(gnutls_x509_crt_t certificate) const noexcept { gnutls_x509_crt_deinit(certificate); }
};
using Key = std::unique_ptr<gnutls_x509_privkey_int, Deinit>;
using Certificate = std::unique_ptr<gnutls_x509_crt_int, Deinit>;

Key MakeKey() {
    gnutls_x509_privkey_t made = nullptr;
    Check(gnutls_x509_privkey_init(&made), "no key can be made");
    Key key(made);
    Check(gnutls_x509_privkey_generate(made, GNUTLS_PK_ECDSA,
                                       GNUTLS_CURVE_TO_BITS(GNUTLS_ECC_CURVE_SECP256R1), 0),
          "no key can be made");
    return key;
}

void AddNames(gnutls_x509_crt_t certificate, const std::string& host) {
    const auto add = [&](gnutls_x509_subject_alt_name_t kind, const void* name, std::size_t size) {
        Check(gnutls_x509_crt_set_subject_alt_name(certificate, kind, name, static_cast<unsigned>(size),
                                                   GNUTLS_FSAN_APPEND),
              "no certificate can be made");
    };
    constexpr std::string_view kLocal = "localhost";
    constexpr std::array<unsigned char, 4> kFour = {127, 0, 0, 1};
    std::array<unsigned char, 16> six{};
    six.back() = 1;
    if (host != kLocal) {
        add(GNUTLS_SAN_DNSNAME, host.data(), host.size());
    }
    add(GNUTLS_SAN_DNSNAME, kLocal.data(), kLocal.size());
    add(GNUTLS_SAN_IPADDRESS, kFour.data(), kFour.size());
    add(GNUTLS_SAN_IPADDRESS, six.data(), six.size());
}

Certificate MakeCertificate(gnutls_x509_privkey_t key, const std::string& host) {
    constexpr const char* kWhat = "no certificate can be made";
    constexpr std::time_t kYear = 365L * 24 * 60 * 60;
    constexpr std::size_t kSerialSize = 16;
    gnutls_x509_crt_t made = nullptr;
    Check(gnutls_x509_crt_init(&made), kWhat);
    Certificate certificate(made);
    std::array<unsigned char, kSerialSize> serial{};
    Check(gnutls_rnd(GNUTLS_RND_NONCE, serial.data(), serial.size()), kWhat);
    serial.front() = (serial.front() & 0x7FU) | 0x01U;  // Positive, and of full length.
    const std::time_t now = std::time(nullptr);
    Check(gnutls_x509_crt_set_version(made, 3), kWhat);
    Check(gnutls_x509_crt_set_key(made, key), kWhat);
    Check(gnutls_x509_crt_set_serial(made, serial.data(), serial.size()), kWhat);
    Check(gnutls_x509_crt_set_activation_time(made, now - 60), kWhat);
    Check(gnutls_x509_crt_set_expiration_time(made, now + kYear), kWhat);
    Check(gnutls_x509_crt_set_dn_by_oid(made, GNUTLS_OID_X520_COMMON_NAME, 0, host.data(),
                                        static_cast<unsigned>(host.size())),
          kWhat);
    AddNames(made, host);
    Check(gnutls_x509_crt_set_basic_constraints(made, 0, -1), kWhat);
    Check(gnutls_x509_crt_set_key_usage(made, GNUTLS_KEY_DIGITAL_SIGNATURE), kWhat);
    Check(gnutls_x509_crt_set_key_purpose_oid(made, GNUTLS_KP_TLS_WWW_SERVER, 0), kWhat);
    Check(gnutls_x509_crt_sign2(made, made, key, GNUTLS_DIG_SHA256, 0), kWhat);
    return certificate;
}

std::string TextOf(const gnutls_datum_t& bytes) {
    std::string text(reinterpret_cast<const char*>(bytes.data), bytes.size);
    gnutls_free(bytes.data);
    return text;
}

}  // namespace

void SetPassword(const std::string& file, const std::string& name) {
    std::error_code error;
    const std::string before = fs::exists(file, error) ? basics::ReadFile(file) : "";
    const std::string line = name + ':' + HashOf(AskForPassword());
    const std::string text = WithAccount(before, name, line);
    (void)AccountList::Read(text);
    StoreForOwnerAlone(file, text);
}

std::string SetUpTls(const std::string& folder) {
    const fs::path key = fs::absolute(folder) / "tls.key";
    const fs::path certificate = fs::absolute(folder) / "tls.crt";
    for (const fs::path& file : {key, certificate}) {
        std::error_code error;
        if (fs::exists(fs::symlink_status(file, error))) {
            throw Failure(Failure::Kind::Surroundings,
                          file.string() + " is there already; it is left as it is");
        }
    }
    const std::string host = basics::HostName().empty() ? "localhost" : basics::HostName();
    const Key madeKey = MakeKey();
    const Certificate madeCertificate = MakeCertificate(madeKey.get(), host);
    gnutls_datum_t text{};
    Check(gnutls_x509_privkey_export2(madeKey.get(), GNUTLS_X509_FMT_PEM, &text),
          "the key cannot be written");
    StoreForOwnerAlone(key, TextOf(text));
    Check(gnutls_x509_crt_export2(madeCertificate.get(), GNUTLS_X509_FMT_PEM, &text),
          "the certificate cannot be written");
    basics::DocumentTarget(certificate.string()).Store(TextOf(text));
    return "# For " + host + " and localhost, for a year; clients have to be told that they may trust it:\n" +
           "tls_certificate = \"" + certificate.string() + "\"\ntls_key = \"" + key.string() + "\"\n";
}

}  // namespace doors

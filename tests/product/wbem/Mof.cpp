#include "Mof.h"

#include <cctype>
#include <stdexcept>

namespace wbem::test {
namespace {

class MofReader final {
  public:
    explicit MofReader(const std::string& mof) { Split(mof); }

    [[nodiscard]] std::vector<std::string> Read() {
        while (m_At < m_Tokens.size()) {
            ReadClass();
        }
        return m_Lines;
    }

  private:
    void Split(const std::string& mof) {
        for (std::size_t at = 0; at < mof.size();) {
            const std::size_t from = at;
            if (mof.compare(at, 2, "//") == 0) {
                at = mof.find('\n', at);
            } else if (mof[at] == '"') {
                at = mof.find('"', at + 1) + 1;
                m_Tokens.emplace_back("\"");
            } else if (IsOfName(mof[at])) {
                while (at < mof.size() && IsOfName(mof[at])) {
                    ++at;
                }
                m_Tokens.push_back(mof.substr(from, at - from));
            } else {
                if (std::isspace(static_cast<unsigned char>(mof[at])) == 0) {
                    m_Tokens.push_back(mof.substr(at, 1));
                }
                ++at;
            }
        }
    }

    static bool IsOfName(char letter) {
        return std::isalnum(static_cast<unsigned char>(letter)) != 0 || letter == '_';
    }

    std::string Next() {
        if (m_At == m_Tokens.size()) {
            throw std::runtime_error("the MOF ends too early");
        }
        return m_Tokens[m_At++];
    }
    bool Takes(const std::string& token) {
        const bool isThere = m_At < m_Tokens.size() && m_Tokens[m_At] == token;
        m_At += isThere ? 1 : 0;
        return isThere;
    }
    void Require(const std::string& token) {
        if (!Takes(token)) {
            throw std::runtime_error(token + " is expected before " +
                                     (m_At < m_Tokens.size() ? m_Tokens[m_At] : ""));
        }
    }

    /// "[Static] ", without a description; empty where nothing is left.
    std::string Qualifiers() {
        std::string all;
        if (!Takes("[")) {
            return all;
        }
        do {
            std::string qualifier = Next();
            if (Takes("(")) {
                std::string value;
                while (!Takes(")")) {
                    value += Next();
                }
                qualifier += "(" + value + ")";
            }
            if (!qualifier.starts_with("Description(\"")) {
                all += (all.empty() ? "" : ", ") + qualifier;
            }
        } while (Takes(","));
        Require("]");
        return all.empty() ? all : "[" + all + "] ";
    }

    std::string Typed() {
        const std::string type = Next();
        return type + " " + Next();
    }

    void ReadClass() {
        const std::string qualifiers = Qualifiers();
        Require("class");
        m_Lines.push_back(qualifiers + "class " + Next());
        Require("{");
        while (!Takes("}")) {
            ReadFeature();
        }
        Require(";");
    }

    void ReadFeature() {
        std::string line = Qualifiers();
        line += Typed();
        if (Takes("[")) {
            Require("]");
            line += "[]";
        }
        if (Takes("(")) {
            line += "(";
            while (!Takes(")")) {
                line += line.ends_with('(') ? "" : ", ";
                line += Qualifiers();
                line += Typed();
                Takes(",");
            }
            line += ")";
        }
        Require(";");
        m_Lines.push_back(line);
    }

    std::vector<std::string> m_Tokens;
    std::size_t m_At = 0;
    std::vector<std::string> m_Lines;
};

}  // namespace

std::vector<std::string> DeclarationsIn(const std::string& mof) {
    return MofReader(mof).Read();
}

}  // namespace wbem::test

#pragma once

#include "inventory/Criteria.h"

#include <array>
#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace command {

/// What the command line asks for, for instance
///
///     mngsrvraid --scenario small --trace 1,2 get-pd-info 0 252 3
///
/// A plain value. Options that were not given are empty.
struct Options {
    enum class Action {
        Help,
        Version,
        Show,
        Smart,
        Health,
        Expect,
        GetInfo,
        GetPDInfo,
        Capture,
        Redact,
        Diff,
        History,
        Events,
        TestAlert
    };
    enum class Format { Xml, Tree, Table, Json, Html, Prometheus };

    /// An input parameter of the method, with the text as it was typed.
    struct Parameter {
        const char* name;  ///< on the command line: "CTRL"
        std::string text;
    };

    Action action = Action::Help;
    std::string subcommand;  ///< as it was typed: "get-pd-info"
    Format format = Format::Xml;
    std::vector<Parameter> parameters;
    std::optional<std::string> scenario;
    std::optional<std::string> installDir;
    std::optional<std::string> traceFile;
    std::optional<std::string> appKey;
    std::optional<std::string> output;
    std::string host;                     ///< what the server is called; empty where that is not known
    std::optional<std::string> document;  ///< of Show, Health and Expect: a saved one, not the server's
    std::optional<std::string> expect;    ///< of Show and Health: file of what ought to be there
    inventory::Limits limits;             ///< of Show and Health
    std::optional<std::string> acceptUntil, acceptReason;  ///< of Expect: what is not well is known
    bool hasSmart = false;                                 ///< of Show: every drive's SMART data as well
    std::size_t jobs = 1;                                  ///< of Show: for how many drives to ask at a time
    bool isCompact = false;                ///< of the format Json: without the documents' items
    bool isVerbose = false;                ///< of Health
    std::string folder;                    ///< of Capture and Redact
    bool isRedacted = false;               ///< of Capture
    std::vector<std::string> redactWords;  ///< of Capture and Redact: what is replaced besides
    bool hasAll = false;                   ///< of Diff: what always moves as well
    std::string before, after;             ///< of Diff: documents or scenarios
    std::optional<std::string> history;    ///< of History, Events and Show: the file to read
    std::optional<std::chrono::system_clock::time_point> since;  ///< with a history, from when on
    std::string part;                                            ///< of History: as it was typed
    bool isFollowing = false;                                    ///< of Events: and new ones as they come
    std::optional<std::string> config;                           ///< of TestAlert: the service's file
    std::chrono::seconds timeLimit{0};                           ///< for what runs the tool; 0: none
    unsigned traceLevels = 0;
    std::string helpText;
};

/// Throws basics::Failure(Use) where the command line cannot be understood.
[[nodiscard]] Options ParseOptions(int count, const char* const* words);

/// Whether the command line asks for the health, as monitoring systems do. They take any other command's exit
/// statuses for their own, so it has to be known also where the rest cannot be understood.
[[nodiscard]] bool AsksForHealth(int count, const char* const* words);

/// "all", or any of 1, 2, 4 and 8 separated by commas, as the sum of bits; nothing for any other text.
[[nodiscard]] std::optional<unsigned> ParseTraceLevels(std::string_view text);

/// Whether the text is a plain decimal number that every layer below takes as what it says: digits and
/// nothing else, at most 2147483647.
[[nodiscard]] bool IsDriveNumber(std::string_view text);

}  // namespace command

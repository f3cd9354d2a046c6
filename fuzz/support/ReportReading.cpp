#include "ReportReading.h"

#include "CheckedLibrary.h"
#include "MemoryReport.h"
#include "Property.h"
#include "test_support/ReaderInside.h"
#include "test_support/TempFolder.h"

#include <algorithm>
#include <iterator>

namespace fuzzing {
struct HandOver {
    using Member = ResultCode (CMSRAID_InfoGetter::*)(std::ifstream&, const std::string&, ItemList&);
    friend constexpr Member PointerOf(HandOver);
};
template struct Inside<HandOver, &CMSRAID_InfoGetter::ParseAndHandOver>;

struct Release {
    using Member = void (CMSRAID_InfoGetter::*)();
    friend constexpr Member PointerOf(Release);
};
template struct Inside<Release, &CMSRAID_InfoGetter::ReleaseCells>;

namespace {

constexpr const char* kReasonNotParsable = "06";

std::string ReportFile(std::string_view text) {
    static const testsupport::TempFolder folder;
    std::string path = folder / "report.txt";
    testsupport::WriteFile(path, std::string(text));
    return path;
}

/// One report, and what must hold behind it.
ResultCode ReadOne(CMSRAID_InfoGetter& reader, std::string_view report, Medium medium, ItemList& items) {
    CheckedLibrary::RefuseNothing();
    Directive refusal;
    if (TakeDirective(report, refusal) && refusal.what == 'r') {
        CheckedLibrary::RefuseItemsFrom(std::size_t{refusal.value} + 1);
    }
    OpenReport open(report, medium);
    const std::string reasonBefore = reader.GetReason();
    const std::size_t itemsBefore = items.size();
    (reader.*PointerOf(Release()))();
    const ResultCode result = (reader.*PointerOf(HandOver()))(open.Stream(), "report", items);

    const ItemList& own = reader.*(&ReaderAccess::m_ItemList);
    if (result == msraid::kSuccess) {
        Require(reader.GetReason() == reasonBefore, "success adds no reason");
        Require(items.size() == itemsBefore + own.size() &&
                    std::equal(own.begin(), own.end(),
                               std::prev(items.end(), static_cast<std::ptrdiff_t>(own.size()))),
                "all items of a report are handed over, in order, behind those that are there");
        Require(!CheckedLibrary::HasRefusedAnItem(), "a list that lacks an item is not handed over");
    } else {
        Require(result == msraid::kGeneralFailure, "a report that cannot be read is a general failure");
        Require(reader.GetReason() == kReasonNotParsable + reasonBefore, "its reason is put in front");
        Require(items.size() == itemsBefore && own.empty(), "nothing of it is handed over or kept");
    }
    CheckedLibrary::RequireAliveExactly(items);
    return result;
}

/// The reader is gone when its items are looked at: what it held back must be gone with it.
Reading ReadAll(const Sections& reports, Medium medium, const ReadReports& read) {
    CheckedLibrary::Begin();
    Reading reading;
    read(reports, medium, reading);
    CheckedLibrary::RequireAliveExactly(reading.items);
    reading.document = CheckedLibrary::Convert(reading.items);
    msraid::DeleteItems(CheckedLibrary::Wrapper(), reading.items);
    reading.items.clear();
    CheckedLibrary::RequireNothingAlive();
    return reading;
}

}  // namespace

OpenReport::OpenReport(std::string_view text, Medium medium) {
    if (medium == Medium::File) {
        m_Stream.open(ReportFile(text));
        return;
    }
    m_Memory = std::make_unique<MemoryReport>(text);
    static_cast<std::ios&>(m_Stream).rdbuf(m_Memory.get());
}

OpenReport::~OpenReport() = default;

void ReadInARow(CMSRAID_InfoGetter& reader, const Sections& reports, Medium medium, Reading& reading,
                const std::function<void()>& before) {
    reader.*(&ReaderAccess::m_pMngLib) = CheckedLibrary::Wrapper();
    for (const std::string_view report : reports) {
        before();
        reading.results.push_back(ReadOne(reader, report, medium, reading.items));
    }
}

void CheckReports(std::string_view input, const ReadReports& read) {
    const Sections reports = Split(input, kSectionEnd);
    const Reading reading = ReadAll(reports, Medium::Memory, read);
    if (IsRunTwice(input)) {
        Require(ReadAll(reports, Medium::File, read) == reading, "the same reports give the same document");
    }
}

}  // namespace fuzzing

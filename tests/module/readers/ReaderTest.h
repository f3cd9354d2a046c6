#pragma once

#include "report/CMSRAID_InfoGetter.h"
#include "test_support/ModuleTest.h"

#include <cstddef>
#include <fstream>
#include <new>
#include <string>
#include <utility>
#include <vector>

namespace testsupport {

using Lines = std::vector<std::string>;

/// Opens to tests what a reader keeps for its derived classes: `reader.*(&ReaderAccess::m_ItemList)`.
struct ReaderAccess : CMSRAID_InfoGetter {
    using CMSRAID_InfoGetter::CreateRAIDItem;
    using CMSRAID_InfoGetter::m_CmdFormat;
    using CMSRAID_InfoGetter::m_CurrentParent;
    using CMSRAID_InfoGetter::m_CurrentRoot;
    using CMSRAID_InfoGetter::m_ItemList;
    using CMSRAID_InfoGetter::m_pMngLib;
};

/// A text that no report should hold and every reader must pass on: control characters, no UTF-8.
inline const std::string kOddBytes = "\x01\xff\xc3\x28\x80\v%s%n";

/// A test of one report reader. `Read` makes a fresh reader read controller 0's report.
class ReaderTest : public ModuleTest {
  protected:
    virtual ResultCode Read(const std::string& report) = 0;

    /// Lets `reader` read `report` as the answer to `command` ("ctrlinfo") for that controller.
    template <class Reader>
    ResultCode ReadAs(Reader& reader, const std::string& command, long controller,
                      const std::string& report) {
        m_Tool.Answer(command + "_a" + std::to_string(controller) + ".txt", report);
        const ResultCode result = reader.GetInfo(controller, m_Library.Wrapper(), m_Items);
        m_Reason = reader.GetReason();
        return result;
    }

    /// Items of a report that is read without any failure.
    Lines ItemsOf(const std::string& report) {
        m_Trace.Clear();
        EXPECT_EQ(Read(report), 0U) << report;
        EXPECT_THAT(Failures(), ::testing::IsEmpty()) << report;
        EXPECT_EQ(m_Reason, "");
        return TakeItems();
    }

    /// "name|value|flag" of such a report's items below `parent`, in order.
    Lines ItemsBelow(const std::string& parent, const std::string& report) {
        Lines below;
        for (const std::string& item : ItemsOf(report)) {
            if (item.starts_with(parent + "|")) {
                below.push_back(item.substr(parent.size() + 1));
            }
        }
        return below;
    }

    /// The reader's own failure lines of a report that it refuses; the base's two behind them are checked
    /// here.
    Lines FailuresOf(const std::string& report) {
        m_Trace.Clear();
        EXPECT_EQ(Read(report), 0x80000001U) << report;
        EXPECT_EQ(m_Reason, "06");
        EXPECT_THAT(Items(), ::testing::IsEmpty());
        EXPECT_EQ(FakeLibrary::ItemsAlive(), 0U);
        Lines failures = Failures();
        const Lines last{"CreateRAIDItem is FAILED (hr=80000001).",
                         "Failed to parse RAID Information 80000001."};
        if (failures.size() < 2 || Lines(failures.end() - 2, failures.end()) != last) {
            ADD_FAILURE() << "no failure of the base for " << report << ::testing::PrintToString(failures);
            return failures;
        }
        failures.resize(failures.size() - 2);
        return failures;
    }

    Lines TakeItems() {
        Lines items = Items();
        m_Library.Delete(m_Items);
        return items;
    }

    /// How many items the library makes for a report.
    std::size_t CreationsFor(const std::string& report) {
        const std::size_t before = FakeLibrary::ItemsDeleted();
        static_cast<void>(ItemsOf(report));
        EXPECT_GT(FakeLibrary::ItemsDeleted(), before);
        return FakeLibrary::ItemsDeleted() - before;
    }

    /// Refuses each item of the report in turn, and only that one, so that nothing later makes up for it.
    void ExpectThatEveryRefusedItemFailsTheRead(const std::string& report) {
        const std::size_t count = CreationsFor(report);
        s_Create = std::exchange(m_Library.Wrapper()->CreateItemDisp, CreateAllButOne);
        for (std::size_t creation = 1; creation <= count; ++creation) {
            s_CreationsLeft = creation - 1;
            EXPECT_EQ(Read(report), 0x80000001U) << creation;
            EXPECT_EQ(m_Reason, "06") << creation;
            EXPECT_THAT(Items(), ::testing::IsEmpty()) << creation;
            EXPECT_EQ(FakeLibrary::ItemsAlive(), 0U) << creation;
        }
        s_CreationsLeft = count;
        EXPECT_THAT(ItemsOf(report), ::testing::Not(::testing::IsEmpty()));
        m_Library.Wrapper()->CreateItemDisp = s_Create;
    }

    /// Ends the memory at every item of the report in turn.
    void ExpectThatEveryExceptionLeavesNothingBehind(const std::string& report) {
        const std::size_t count = CreationsFor(report);
        CreateItemDispFunction* const create =
            std::exchange(m_Library.Wrapper()->CreateItemDisp, CreateOrThrow);
        s_Create = create;
        for (std::size_t creation = 1; creation <= count; ++creation) {
            s_CreationsLeft = creation - 1;
            EXPECT_THROW(static_cast<void>(Read(report)), std::bad_alloc) << creation;
            EXPECT_THAT(Items(), ::testing::IsEmpty()) << creation;
            EXPECT_EQ(FakeLibrary::ItemsAlive(), 0U) << creation;
            EXPECT_THAT(m_Root.ResultFiles(), ::testing::IsEmpty()) << creation;
        }
        s_CreationsLeft = count;
        EXPECT_EQ(Read(report), 0U);
        m_Library.Wrapper()->CreateItemDisp = s_Create;
    }

    /// Items that a library without its deleting entry point is left with when the report has been read and
    /// the items handed over are gone.
    std::size_t ItemsLeftWhenNoneCanBeDeleted(const std::string& report) {
        s_Create = std::exchange(m_Library.Wrapper()->CreateItemDisp, CreateAndNote);
        DeleteItemDispFunction* const remove = std::exchange(m_Library.Wrapper()->DeleteItemDisp, nullptr);
        s_Made.clear();
        EXPECT_EQ(Read(report), 0U);
        m_Library.Wrapper()->CreateItemDisp = s_Create;
        m_Library.Wrapper()->DeleteItemDisp = remove;
        for (CItemDisp* const item : m_Items) {
            s_Made.remove(item);
        }
        const std::size_t left = s_Made.size();
        m_Library.Delete(s_Made);
        return left;
    }

    /// Names of the items that a report's reader deletes itself, in order.
    Lines DeletedBy(const std::string& report) {
        s_Delete = std::exchange(m_Library.Wrapper()->DeleteItemDisp, DeleteAndNote);
        s_Deleted.clear();
        EXPECT_EQ(Read(report), 0U);
        m_Library.Wrapper()->DeleteItemDisp = s_Delete;
        return s_Deleted;
    }

    /// Calls the line hook of a reader with a stream that has failed already; the reader's items are
    /// "Items()".
    ResultCode HookOnFailedStream(CMSRAID_InfoGetter& reader, const std::string& line) {
        std::ifstream failed;
        failed.setstate(std::ios::failbit);
        reader.*(&ReaderAccess::m_pMngLib) = m_Library.Wrapper();
        const ResultCode result = (reader.*(&ReaderAccess::CreateRAIDItem))(failed, line);
        m_Items.splice(m_Items.end(), reader.*(&ReaderAccess::m_ItemList));
        return result;
    }

    /// A command that ends well and leaves no result file, or one that nobody can delete.
    [[nodiscard]] std::string CommandWithoutFile() const {
        return "vdkcli -v >/dev/null 2>&1; rm " + m_Root.Path().string() + "/tmp/MSRAID/* #%s";
    }
    [[nodiscard]] std::string CommandWithPinnedFile() const {
        return "vdkcli -v >/dev/null 2>&1; " + m_Root.PinResultFiles() + " #%s";
    }

    std::string m_Reason;  ///< of the last `Read`

  private:
    static CItemDisp* CreateOrThrow(const char* parentName, const char* name, const char* value,
                                    const char* flag) {
        if (s_CreationsLeft == 0) {
            throw std::bad_alloc();
        }
        --s_CreationsLeft;
        return s_Create(parentName, name, value, flag);
    }
    static CItemDisp* CreateAllButOne(const char* parentName, const char* name, const char* value,
                                      const char* flag) {
        return s_CreationsLeft-- == 0 ? nullptr : s_Create(parentName, name, value, flag);
    }
    static CItemDisp* CreateAndNote(const char* parentName, const char* name, const char* value,
                                    const char* flag) {
        s_Made.push_back(s_Create(parentName, name, value, flag));
        return s_Made.back();
    }
    static void DeleteAndNote(CItemDisp* item) {
        s_Deleted.push_back(item->m_Name);
        s_Delete(item);
    }

    static inline CreateItemDispFunction* s_Create = nullptr;
    static inline DeleteItemDispFunction* s_Delete = nullptr;
    static inline std::size_t s_CreationsLeft = 0;
    static inline ItemList s_Made;
    static inline Lines s_Deleted;
};

}  // namespace testsupport

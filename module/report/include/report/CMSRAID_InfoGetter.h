#pragma once

#include "itemconv/CMSRAID_MngLib.h"
#include "itemconv/DisplayItems.h"
#include "itemconv/MsraidTrace.h"
#include "itemconv/ResultCode.h"
#include "report/ItemPosition.h"

#include <fstream>
#include <functional>
#include <string>

/// Base of all readers of the tool's reports: runs the tool for one controller and turns its report, line by
/// line, into display items.
///
///     ### General Information ###     a title line; its item stands under the current root
///     Product Name      : RAID 8i     a key line: key, first colon, value; under the current parent
///
/// A reader serves one method call, for one controller after the other, on one thread. The library passed to
/// `GetInfo` stays loaded until the reader is gone or idle. Items belong to the reader until `GetInfo`
/// succeeds, then to the caller's list. Operations return 0 or a failure code. An exception (std::bad_alloc
/// above all) leaves `GetInfo` after it has deleted the items read and the result file; items held back for a
/// title go with the reader, which is not to be used again then.
class CMSRAID_InfoGetter {
  public:
    CMSRAID_InfoGetter();
    CMSRAID_InfoGetter(const CMSRAID_InfoGetter&) = delete;
    CMSRAID_InfoGetter& operator=(const CMSRAID_InfoGetter&) = delete;
    virtual ~CMSRAID_InfoGetter();

    /// A path no other run of this process uses, such as ".../tmp/MSRAID/00001a2b_00000005_MngSrvRaid.txt":
    /// thread and counter in hexadecimal. Makes the directories on the way.
    [[nodiscard]] static std::string GetRsltFilePath();

    /// Reads the report of one controller and appends its items to `items`. On failure nothing is appended
    /// and `m_Reason` begins with the code of the cause.
    virtual ResultCode GetInfo(long ctrlNo, CMSRAID_MngLib* lib, ItemList& items);

    /// Codes of the failures so far, newest first: "01" the tool could not be run, "04" its report could not
    /// be opened, "06" it could not be parsed.
    [[nodiscard]] const std::string& GetReason() const { return m_Reason; }

  protected:
    /// The loop over the report's lines.
    virtual ResultCode Parse(std::ifstream& file, std::string path);

    /// What one line means; may read the lines behind it as well. Anything but 0 ends the parse.
    virtual ResultCode CreateRAIDItem(std::ifstream& file, std::string line) = 0;

    /// Makes a title line's item the current parent. Refuses a line that does not begin with "### ".
    virtual ResultCode ParseTitle(std::ifstream& file, std::string line);

    /// Appends a key line's item to `list`. Refuses a line without a colon or with the colon first.
    virtual ResultCode ParseKeyValue(std::ifstream& file, std::string line, ItemList& list);

    /// Starts a new tree: its root becomes current root and current parent, or both become null when the
    /// library makes no item.
    virtual void AddRootItem();

    /// Deletes what the reader still holds back; called once at the end of every parse.
    virtual void FreeItemList();

    /// Removes blanks and tabs at the front, and these and line ends at the end. A carriage return in front
    /// stays.
    virtual void Trim(std::string& text);

    static const std::string PROVIDER_TMP_DIR;
    static const std::string MSRAID_DIR;
    static const std::string GENERAL_INFO_TITLE_NAME;
    static const std::string TITLE_BEGIN_NAME;
    static const std::string TITLE_END_NAME;
    static const std::string RG_NO_HEAD;
    static const std::string CACHE_RG_NO_HEAD;
    static const std::string LD_NO_NAME;
    static const std::string PD_NO_NAME;
    static const std::string RG_NO_NAME;
    static const std::string CTRL_NO_NAME_HEAD;
    static const std::string VDK_RSLT_FILE;

    // What the readers share.

    /// What is done with an opened report; the path is that of its file.
    using ReportRule = std::function<ResultCode(std::ifstream& file, const std::string& path)>;

    /// Runs the reader's command with `argument` in place of its "%s" and hands the opened report to `read`.
    /// The result file is deleted on every way out.
    ResultCode ReadReport(const std::string& argument, const ReportRule& read);

    /// The next line of a section, trimmed. False: the section ends, with a blank line or with the report.
    [[nodiscard]] bool ReadSectionLine(std::ifstream& file, std::string& line);

    /// Whether a line has a colon that is not its first character.
    [[nodiscard]] static bool IsKeyLine(const std::string& line);

    /// `ParseKeyValue` for a section's key line; a refusal is traced.
    ResultCode AddKeyItem(std::ifstream& file, const std::string& line, ItemList& list);

    /// Reads the key lines of a section to its end into `m_ItemList`, passing over other lines; each new
    /// item, the last of the list, goes to `onItem`, whose failure ends the section.
    ResultCode ReadKeyLines(std::ifstream& file, const std::function<ResultCode(CItemDisp&)>& onItem);

    /// Sets the stream back to the start of the line just read, given as it was read.
    static void PutBack(std::ifstream& file, const std::string& line);

    /// Puts a new item in front of `place` in `list`.
    ResultCode InsertItem(ItemList& list, ItemList::const_iterator place, const std::string& parentName,
                          const std::string& name, const std::string& value,
                          msraid::Validity validity = msraid::Validity::FromReport);

    /// A key that the output always carries and this report lacks: an empty item under the current parent, in
    /// front of `place` in `m_ItemList`.
    ResultCode InsertPlaceholder(ItemList::const_iterator place, const std::string& name);

    /// Starts a tree with a root of that name.
    void StartRoot(const std::string& name);

    /// Moves items held back for a title to the end of `m_ItemList`, behind that title. Passes over null
    /// cells.
    void ReleaseHeldItems(ItemList& held);

    /// For destructors: deletes held items that only an exception can have left behind.
    void DropHeldItems(ItemList& held);

    std::string m_Reason;
    std::string m_CmdFormat;
    ItemList m_ItemList;
    ItemPosition m_CurrentRoot;
    ItemPosition m_CurrentParent;
    CMSRAID_MngLib* m_pMngLib = nullptr;

  private:
    ResultCode ParseAndHandOver(std::ifstream& file, const std::string& path, ItemList& items);
    [[nodiscard]] std::string FormatCommand(const std::string& argument) const;
    void ReleaseCells();
};

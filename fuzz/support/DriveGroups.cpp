#include "DriveGroups.h"

#include "MemoryReport.h"
#include "readers/CMSRAID_LDInfoGetter.h"
#include "test_support/ReaderInside.h"

#include <istream>
#include <map>
#include <string>

namespace fuzzing {

using Groups = std::map<long, std::string>;

struct ReadGroup {
    using Member = void (CMSRAID_LDInfoGetter::*)(std::string, std::string&, Groups&);
    friend constexpr Member PointerOf(ReadGroup);
};
template struct Inside<ReadGroup, &CMSRAID_LDInfoGetter::ReadGroupOfDrive>;

struct GroupsOfReader {
    using Member = Groups CMSRAID_PDInfoGetter::*;
    friend constexpr Member PointerOf(GroupsOfReader);
};
template struct Inside<GroupsOfReader, &CMSRAID_PDInfoGetter::m_MapRGNo>;

void FillGroups(CMSRAID_PDInfoGetter& reader, std::string_view logicalDriveReport) {
    Groups& groups = reader.*PointerOf(GroupsOfReader());
    groups.clear();
    CMSRAID_LDInfoGetter groupReader;
    MemoryReport memory(logicalDriveReport);
    std::istream in(&memory);
    std::string group;
    for (std::string line; std::getline(in, line);) {
        (groupReader.*PointerOf(ReadGroup()))(line, group, groups);
    }
}

}  // namespace fuzzing

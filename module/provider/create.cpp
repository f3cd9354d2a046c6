#include "CancellationHold.h"
#include "provider/CZORBALT_MngSrvRaid.h"

/// The module's only export: a new provider, which the framework owns and deletes through its virtual
/// destructor. What the constructor throws goes on to the framework.
extern "C" __attribute__((visibility("default"))) CZORBALT_MngSrvRaid* create() {
    const CancellationHold hold;
    return new CZORBALT_MngSrvRaid;
}

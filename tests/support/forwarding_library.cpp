// A conversion library file whose entry points are those of the test program that loads it. Built several
// times, each time without one entry point.
#include "itemconv/QelLibIF.h"

extern "C" {

QelLibIF* TestCreateLibIF();
void TestDeleteLibIF(QelLibIF* converter);
CItemDisp* TestCreateItemDisp(const char* parentName, const char* name, const char* value,
                              const char* validFlag);
void TestDeleteItemDisp(CItemDisp* item);

#ifndef WITHOUT_CreateLibIF
QelLibIF* CreateLibIF() {
    return TestCreateLibIF();
}
#endif
#ifndef WITHOUT_DeleteLibIF
void DeleteLibIF(QelLibIF* converter) {
    TestDeleteLibIF(converter);
}
#endif
#ifndef WITHOUT_CreateItemDisp
CItemDisp* CreateItemDisp(const char* parentName, const char* name, const char* value,
                          const char* validFlag) {
    return TestCreateItemDisp(parentName, name, value, validFlag);
}
#endif
#ifndef WITHOUT_DeleteItemDisp
void DeleteItemDisp(CItemDisp* item) {
    TestDeleteItemDisp(item);
}
#endif
}

#pragma once

#include "itemconv/CItemDisp.h"
#include "itemconv/ResultCode.h"

#include "qel/CZORBALT_SysService.h"

class CallObjects;
class CMSRAID_InfoGetter;
class CMSRAID_MngLib;
class MethodCall;

/// The RAID provider: answers the methods of the WBEM class "ZORBALT_MngSrvRaid".
///
///     GetInfo                        -> XmlData: the whole RAID configuration of the server
///     GetPDInfo CtrlNo EnclNo PDNo   -> XmlData: one drive with its SMART data
///
/// A method's failure travels as "ReturnValue" of the output instance, with status 0; only a missing class
/// definition and an exception make the call itself fail. Calls into one object must not overlap.
class CZORBALT_MngSrvRaid : public CZORBALT_SysService {
  public:
    CZORBALT_MngSrvRaid();

    /// Does not delete the wrapper of the conversion library, which lives as long as the process.
    ~CZORBALT_MngSrvRaid() override;

    /// Runs one method and reports to `sink`; a handler of the exiting process may call too. Exceptions of a
    /// method become status 0x80041001; those raised before it starts (memory, the object manager, the trace)
    /// go on to the framework. Without a sink nobody is told. A deferred cancellation of the calling thread
    /// takes effect when the call has come to its end; an asynchronous one ends the process, which is the
    /// host's own risk.
    DWORD ExecMethodAsync(char* className, char* methodName, long flags, IWbemContext* context,
                          IWbemClassObject* inParams, IWbemObjectSink* sink) override;

    /// Deletes the items through the conversion library and empties the list; only empties it when no library
    /// has been loaded yet.
    virtual void FreeItemList(ItemList& items);

  private:
    ResultCode GetInfo(IWbemClassObject* inParams, IWbemClassObject* outParams);
    ResultCode GetPDInfo(IWbemClassObject* inParams, IWbemClassObject* outParams);

    ResultCode CheckCaller(MethodCall& call, IWbemClassObject* inParams) const;
    ResultCode ReadServer(MethodCall& call, IWbemClassObject* inParams);
    ResultCode ReadDrive(MethodCall& call, IWbemClassObject* inParams, HRESULT& lastParameterStatus);
    ResultCode Run(CMSRAID_InfoGetter& reader, long ctrlNo, MethodCall& call, const char* readerName);
    void Finish(MethodCall& call, const char* methodName, ResultCode result);
    void FetchObjects(CallObjects& objects, const char* methodName, IWbemContext* context) const;

    CMSRAID_MngLib* m_pMngLib = nullptr;  ///< null until the constructor has made one
};

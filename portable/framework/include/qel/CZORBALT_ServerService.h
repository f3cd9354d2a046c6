#pragma once

#include "qel/IWbemClassObject.h"
#include "qel/IWbemContext.h"
#include "qel/IWbemObjectManager.h"
#include "qel/IWbemObjectSink.h"
#include "qel/QelExport.h"

#include <string>

/// What every provider of the server-management framework is: an object that the framework gets from a
/// module's `create`, calls `ExecMethodAsync` on, and deletes.
///
/// Calls into one provider object must not overlap; different objects may be used by different threads.
class QEL_API CZORBALT_ServerService {
  public:
    /// The property of an input instance in which a caller hands over its application key.
    static constexpr const char* APP_KEY_PROPERTY = "__AppKey";

    CZORBALT_ServerService(const CZORBALT_ServerService&) = delete;
    CZORBALT_ServerService& operator=(const CZORBALT_ServerService&) = delete;
    virtual ~CZORBALT_ServerService();

    /// Runs one method of a WBEM class and reports to `sink`. This base version is for methods that no
    /// provider knows: it reports nothing and returns WBEM_E_INVALID_METHOD.
    virtual DWORD ExecMethodAsync(char* className, char* methodName, long flags, IWbemContext* context,
                                  IWbemClassObject* inParams, IWbemObjectSink* sink);

    /// Whether the caller's input instance carries the application key. Takes the same time for every wrong
    /// key. Throws QelException when a key is configured that cannot be read.
    [[nodiscard]] bool HasOperatingAuthority(IWbemClassObject* inParams) const;

    /// The application key configured for the framework: the first line of etc/app.key below the install
    /// root, without white space at its end; "" where there is no such file. Throws QelException when the
    /// file is there but cannot be read, so that a broken configuration never lets anyone in.
    [[nodiscard]] std::string GetOperatingAuthorityAppKey() const;

    /// Puts another object manager in place of the process's own. Not owned; null is allowed.
    void SetObjectManager(IWbemObjectManager* manager) { m_ObjectManager = manager; }

  protected:
    CZORBALT_ServerService(std::string category, std::string vendor, std::string version);

    /// Enters a module's file name and this service's version into the process's version log.
    void writeDLLFileVersionLog(const char* fileName) const;

    [[nodiscard]] IWbemObjectManager* GetObjectManager() const { return m_ObjectManager; }

  private:
    std::string m_Category;
    std::string m_Vendor;
    std::string m_Version;
    IWbemObjectManager* m_ObjectManager;
};

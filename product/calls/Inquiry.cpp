#include "calls/Inquiry.h"

#include "CallListener.h"
#include "FailureText.h"
#include "basics/Failure.h"
#include "calls/InstallRoot.h"

#include <utility>

namespace calls {
namespace {

using basics::Failure;

}  // namespace

Inquiry::Inquiry(InquiryRequest request)
    : m_Request(std::move(request)),
      m_Listener(std::make_unique<CallListener>(m_Request.progress)),
      m_Module(Module::Load(Module::DefaultPath())) {}

Inquiry::~Inquiry() = default;

std::string Inquiry::AskForServer() {
    return Ask(std::nullopt);
}

std::string Inquiry::AskForDrive(const DrivePlace& drive) {
    return Ask(drive);
}

std::string Inquiry::Ask(const std::optional<DrivePlace>& drive) {
    const std::string& name = drive ? m_Request.driveCall : m_Request.serverCall;
    FailureSetting setting = {name, drive.has_value(), m_Request.scenario};
    m_Listener->Forget();
    MethodOutcome outcome = CallMethod(m_Module.Provider(), {drive, m_Request.appKey});
    setting.command = m_Listener->LastCommand();
    setting.run = m_Listener->LastRun();
    if (outcome.status == WBEM_S_NO_ERROR && outcome.returnValue.value_or(0) != 0) {
        throw Failure(Failure::Kind::Method,
                      DescribeMethodFailure(*outcome.returnValue, m_Listener->Reasons(), setting));
    }
    if (!outcome.document) {
        throw Failure(Failure::Kind::Call, WithKnownRoot(DescribeCallFailure(outcome, setting)));
    }
    return std::move(*outcome.document);
}

void Inquiry::ShowDone(std::size_t done, std::size_t total) {
    if (m_Request.progress != nullptr) {
        m_Request.progress->ShowDone(done, total);
    }
}

inventory::ToolRuns Inquiry::Runs() const {
    return m_Listener->Runs();
}

inventory::Document ReadDocument(const std::string& xml, const std::string& source) {
    try {
        return inventory::Document::Read(xml);
    } catch (const inventory::DocumentError& error) {
        basics::FailSurroundings(source + " is no RAID document: " + error.what());
    }
}

}  // namespace calls

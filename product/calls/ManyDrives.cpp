#include "calls/ManyDrives.h"

#include "Job.h"
#include "basics/Failure.h"

#include <poll.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <utility>

namespace calls {
namespace {

using basics::Failure;
using inventory::ToolRuns;

/// The processes, and the drives that are left for them.
class Crew final {
  public:
    Crew(const InquiryRequest& request, const std::vector<DrivePlace>& places, std::size_t jobs,
         const DriveTaker& take)
        : m_Request(request), m_Places(places), m_Take(take), m_Jobs(jobs) {}

    [[nodiscard]] ToolRuns Run() {
        ShowDone();
        while (HandOut()) {
            for (std::unique_ptr<Job>* const job : WithNews()) {
                if (!(*job)->Receive()) {
                    Lose(*job);
                    continue;
                }
                while (const std::optional<Job::Message> message = (*job)->Next()) {
                    Hear(**job, *message);
                }
            }
        }
        return m_Runs;
    }

  private:
    // False when there is neither anything left to ask nor anything to wait for.
    bool HandOut() {
        bool isAnyAsking = false;
        for (std::unique_ptr<Job>& job : m_Jobs) {
            if (job == nullptr || !job->Number()) {
                Employ(job);
            }
            isAnyAsking |= job != nullptr && job->Number().has_value();
        }
        return isAnyAsking;
    }

    // A process is made when there is something to do for it.
    void Employ(std::unique_ptr<Job>& job) {
        while (m_Next < m_Places.size() && !m_Places[m_Next].IsKnown()) {
            ++m_Next;
            ++m_Done;
        }
        if (m_Next == m_Places.size()) {
            return;
        }
        if (job == nullptr) {
            job = std::make_unique<Job>(m_Request, m_Places);
        }
        job->Ask(m_Next++);
    }

    [[nodiscard]] std::vector<std::unique_ptr<Job>*> WithNews() {
        std::vector<pollfd> sockets;
        std::vector<std::unique_ptr<Job>*> asked;
        for (std::unique_ptr<Job>& job : m_Jobs) {
            if (job != nullptr && job->Number()) {
                sockets.push_back({job->Socket(), POLLIN, 0});
                asked.push_back(&job);
            }
        }
        (void)::poll(sockets.data(), sockets.size(), -1);  // Interrupted, it is tried again.
        std::vector<std::unique_ptr<Job>*> withNews;
        for (std::size_t at = 0; at < sockets.size(); ++at) {
            if (sockets[at].revents != 0) {
                withNews.push_back(asked[at]);
            }
        }
        return withNews;
    }

    void Hear(Job& job, const Job::Message& message) {
        switch (message.kind) {
            case 'c':
                m_Request.progress->Show(message.content);
                break;
            case 'r':
                m_Runs += RunsIn(message.content);
                break;
            case 'd':
                Finish(job, [&] { return message.content; });
                break;
            default:
                Finish(job, [&]() -> std::string { ThrowFailureIn(message.content); });
        }
    }

    void Lose(std::unique_ptr<Job>& job) {
        const std::string end = job->End();
        Finish(*job, [&]() -> std::string {
            throw Failure(Failure::Kind::Call,
                          "the process that asked for it was lost (" + end + "); see the system's log");
        });
        job.reset();
    }

    void Finish(Job& job, const std::function<std::string()>& answer) {
        m_Take(*job.Number(), answer);
        job.SetDone();
        ++m_Done;
        ShowDone();
    }

    void ShowDone() const {
        if (m_Request.progress != nullptr) {
            m_Request.progress->ShowDone(m_Done, m_Places.size());
        }
    }

    const InquiryRequest& m_Request;
    const std::vector<DrivePlace>& m_Places;
    const DriveTaker& m_Take;
    std::size_t m_Next = 0;
    std::size_t m_Done = 0;
    ToolRuns m_Runs;
    std::vector<std::unique_ptr<Job>> m_Jobs;  ///< null: not made yet, or lost
};

}  // namespace

ToolRuns AskForDrives(const InquiryRequest& request, const std::vector<DrivePlace>& places, std::size_t jobs,
                      const DriveTaker& take) {
    return Crew(request, places, jobs, take).Run();
}

}  // namespace calls

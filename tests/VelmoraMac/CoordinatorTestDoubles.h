#pragma once

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "CatalogFixture.h"
#include "VelmoraMac/ContentCatalog.h"
#include "VelmoraMac/LoginLaunchControlling.h"
#include "VelmoraMac/ReminderScheduling.h"

namespace velmora::test {

// Records what the coordinator asks of its reminders; permission requests
// wait until the test answers them.
class RecordingReminders final : public ReminderScheduling {
public:
    struct Scheduled {
        PracticeState state;
        std::string title;
        std::string body;
    };

    [[nodiscard]] const OpenCallback& onOpen() const override { return m_onOpen; }
    void setOnOpen(OpenCallback callback) override { m_onOpen = std::move(callback); }
    [[nodiscard]] const PermissionDeniedCallback& onPermissionDenied() const override { return m_onPermissionDenied; }
    void setOnPermissionDenied(PermissionDeniedCallback callback) override
    {
        m_onPermissionDenied = std::move(callback);
    }

    void schedule(
        std::shared_ptr<const PracticeState> state, const std::string& title, const std::string& body) override
    {
        scheduled.push_back({*state, title, body});
    }
    void request(PermissionCompletion completion) override { pendingRequests.push_back(std::move(completion)); }

    void answerRequest(bool granted)
    {
        auto completion = std::move(pendingRequests.front());
        pendingRequests.erase(pendingRequests.begin());
        completion(granted);
    }

    std::vector<Scheduled> scheduled;
    std::vector<PermissionCompletion> pendingRequests;

private:
    OpenCallback m_onOpen;
    PermissionDeniedCallback m_onPermissionDenied;
};

class FakeLoginLaunch final : public LoginLaunchControlling {
public:
    [[nodiscard]] bool enabled() const override { return status == 1 || status == 2; }
    [[nodiscard]] bool requiresApproval() const override { return status == 2; }
    void setEnabled(bool enable) override
    {
        requests.push_back(enable);
        if (refuse)
            throw std::runtime_error("the system refused");
        status = enable ? statusAfterRegistering : 0;
    }

    int status = 0;
    int statusAfterRegistering = 1;
    bool refuse = false;
    std::vector<bool> requests;
};

// A complete catalog whose texts say which key and language they are, with
// topics in a display order that differs from alphabetical order.
inline nlohmann::json coordinatorCatalogDocument()
{
    nlohmann::json document = minimalCatalogDocument();
    std::reverse(document["topics"].begin(), document["topics"].end());
    for (const char* language : {"en", "fr", "pi"}) {
        for (const char* key : {"loadError", "saveError", "permissionDenied", "dailyGentle", "daysSuffix", "back",
                 "settings", "notice", "noticed"})
            document["strings"][language][key] = std::string(key) + " in " + language;
        document["strings"][language]["days"] = std::string("{count} days in ") + language;
    }
    document["strings"]["en"]["back"] = "back, not {count}";
    return document;
}

} // namespace velmora::test

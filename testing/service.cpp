#include "orvel/analytics/testing/service.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "testing/conversation.h"
#include "testing/documents.h"
#include "testing/text.h"

namespace Orvel::Analytics::Testing {

class Service::Impl {
  public:
    ServiceState& state() { return *state_; }

    /// Reads every command of a step that has arrived.
    template <typename Read>
    auto readAll(Step step, const Read& read) {
        std::vector<decltype(read(WideStringView()))> records;
        const std::lock_guard lock(state_->mutex);
        for (const Arrived& arrived : state_->arrived) {
            if (arrived.step == step) {
                auto record = read(arrived.document);
                record.application = utf8Of(arrived.application);
                record.accepted = arrived.accepted;
                records.push_back(std::move(record));
            }
        }
        return records;
    }

  private:
    const std::shared_ptr<ServiceState> state_ = std::make_shared<ServiceState>();
    ServiceEndpoint endpoint_{state_};
    const InForce inForce_{endpoint_};
};

Service::Service() : impl_(std::make_unique<Impl>()) { impl_->state().consent.processData = true; }

Service::~Service() = default;

void Service::answer(Step step, Answer answer) {
    const std::lock_guard lock(impl_->state().mutex);
    impl_->state().script.answer(step, std::move(answer));
}

void Service::answerNext(Step step, Answer answer) {
    const std::lock_guard lock(impl_->state().mutex);
    impl_->state().script.answerNext(step, std::move(answer));
}

void Service::refuseConnections(std::int32_t status) {
    answer(Step::Connect, Answer::status(status));
}

void Service::acceptEverything() {
    const std::lock_guard lock(impl_->state().mutex);
    impl_->state().script.acceptEverything();
}

void Service::setConsent(const ConsentObject& consent) {
    const std::lock_guard lock(impl_->state().mutex);
    impl_->state().consent = consent;
}

void Service::setDocuments(const PrivacyDocuments& documents) {
    const std::lock_guard lock(impl_->state().mutex);
    impl_->state().consent.privacyDocuments = documents;
}

ConsentObject Service::consent() const {
    const std::lock_guard lock(impl_->state().mutex);
    return impl_->state().consent;
}

std::vector<Registration> Service::registrations() const {
    return impl_->readAll(Step::RegisterDataClass, readRegistration);
}

std::vector<Batch> Service::batches() const { return impl_->readAll(Step::SendEvents, readBatch); }

std::vector<Event> Service::events() const {
    std::vector<Event> events;
    for (Batch& batch : batches()) {
        if (batch.accepted) {
            std::move(batch.events.begin(), batch.events.end(), std::back_inserter(events));
        }
    }
    return events;
}

std::vector<ConsentChange> Service::consentChanges() const {
    return impl_->readAll(Step::SetConsent, [](WideStringView document) {
        ConsentChange change;
        change.permissions = readPermissions(document);
        return change;
    });
}

std::size_t Service::connections() const {
    const std::lock_guard lock(impl_->state().mutex);
    return impl_->state().connections;
}

std::vector<WideString> Service::commands() const {
    std::vector<WideString> commands;
    const std::lock_guard lock(impl_->state().mutex);
    for (const Arrived& arrived : impl_->state().arrived) {
        commands.push_back(arrived.command);
    }
    return commands;
}

void Service::forget() {
    const std::lock_guard lock(impl_->state().mutex);
    impl_->state().arrived.clear();
    impl_->state().connections = 0;
}

std::chrono::milliseconds Service::waited() const {
    const std::lock_guard lock(impl_->state().mutex);
    return impl_->state().waited;
}

void Service::onWait(std::function<void(std::chrono::milliseconds)> moved) {
    const std::lock_guard lock(impl_->state().mutex);
    impl_->state().onWait = std::move(moved);
}

}  // namespace Orvel::Analytics::Testing

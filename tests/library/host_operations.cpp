#include "library/host_operations.h"

#include <stdlib.h>
#include <sys/resource.h>
#include <unistd.h>

#include <stdexcept>
#include <utility>

#include "support/service_process.h"
#include "tests/relay/frame_bytes.h"
#include "tests/relay/server_process.h"

namespace Orvel::HostTests {
namespace {

using Relay::Testing::ServedConnection;
using Relay::Testing::ServerProcess;
using Support::ServiceProcess;
using Support::TemporaryFolder;
using TestSupport::field;
using TestSupport::TestDataClass;

const WideString kName = ORVEL_TEXT("MyApp");
const WideString kVersion = ORVEL_TEXT("1.0");

class FailingDataClass final : public Analytics::DataClass::BaseDataClass {
  public:
    void reservedOperation() override {}
    std::list<Analytics::DataClass::DataClassFieldInfo> getFields() override {
        throw std::runtime_error("no fields today");
    }
};

void collect(Application& application, const WideString& event) {
    application.session.CollectEvent(&application.dataClass, event);
}

std::vector<Operation> operationsOnObjects() {
    return {
        {"a session", [](Application&) { const AnalyticsSession made(kName, kVersion); }},
        {"a session without a name",
         [](Application&) { const AnalyticsSession made({}, kVersion); }},
        {"a session without a version",
         [](Application&) { const AnalyticsSession made(kName, {}); }},
        {"a session of a user that is no GUID",
         [](Application&) { const AnalyticsSession made(kName, kVersion, ORVEL_TEXT("me")); }},
        {"copies of a session",
         [](Application& from) {
             AnalyticsSession copy(from.session);
             copy = from.session;
         }},
        {"moves of a session",
         [](Application& from) {
             AnalyticsSession moved(std::move(from.session));
             from.session = std::move(moved);
         }},
        {"a start", [](Application& from) { from.session.SetStartTime(1); }},
        {"a start in the future", [](Application& from) { from.session.SetStartTime(INT64_MAX); }},
        {"an end before the start", [](Application& from) { from.session.SetEndTime(1); }},
        {"a data class", [](Application&) { const TestDataClass made({}); }},
        {"permissions",
         [](Application& from) {
             ProcessingPermissions read;
             read.FromJson(from.consent.processingPermissions.ToJson());
         }},
        {"permissions that are none",
         [](Application& from) { from.consent.processingPermissions.FromJson(ORVEL_TEXT("{}")); }},
        {"documents that are none",
         [](Application& from) { from.documents.FromJson(ORVEL_TEXT("[")); }},
        {"a consent that is none",
         [](Application& from) { from.consent = ConsentObject::FromJson(ORVEL_TEXT("{}")); }},
        {"text", [](Application&) { static_cast<void>(toUtf8(toWide("text \U0001F600"))); }},
        {"text that is ill-formed", [](Application&) { static_cast<void>(toWide("\xFF")); }},
    };
}

std::vector<Operation> operationsOnEvents() {
    return {
        {"an event",
         [](Application& from) { collect(from, ORVEL_TEXT("{\"count\":1,\"text\":\"t\"}")); }},
        {"an empty event", [](Application& from) { collect(from, {}); }},
        {"an event that is no JSON", [](Application& from) { collect(from, ORVEL_TEXT("{")); }},
        {"an event with a null",
         [](Application& from) { collect(from, ORVEL_TEXT("{\"count\":null}")); }},
        {"an event with a count that is none",
         [](Application& from) { collect(from, ORVEL_TEXT("{\"count\":\"many\"}")); }},
        {"an event with a text too long",
         [](Application& from) { collect(from, ORVEL_TEXT("{\"text\":\"longer\"}")); }},
        {"an event of a class with a limit beyond all",
         [](Application& from) {
             from.dataClass.fields = {field(ORVEL_TEXT("s"), ORVEL_TEXT("varchar(99999999999)"))};
             collect(from, ORVEL_TEXT("{\"s\":\"x\"}"));
         }},
    };
}

std::vector<Operation> operationsOnTheService() {
    return {
        {"a registration",
         [](Application& from) { from.session.RegisterDataClass(&from.dataClass); }},
        {"a registration of a class that raises",
         [](Application& from) {
             FailingDataClass failing;
             from.session.RegisterDataClass(&failing);
         }},
        {"a batch", [](Application& from) { from.session.SendEvents(); }},
        {"a large batch",
         [](Application& from) {
             collect(from,
                     ORVEL_TEXT("{\"long\":\"") + WideString(1'000'000, u'x') + ORVEL_TEXT("\"}"));
             from.session.SendEvents();
         }},
        {"the consent", [](Application& from) { from.session.GetConsent(&from.consent); }},
        {"a change of the consent",
         [](Application& from) { from.session.SetConsent(from.consent.processingPermissions); }},
        {"the documents", [](Application& from) { from.session.GetDocumentURLs(&from.documents); }},
    };
}

void sayNonsense(ServedConnection& connection) {
    connection.send("HTTP/1.1 400 Bad Request\r\nConnection: close\r\n\r\n");
}

void leaveInMidCommand(ServedConnection& connection) {
    connection.welcome();
    connection.receiveFrame();
    connection.send(Relay::Testing::replyFrame(1, kName + ORVEL_TEXT("::ACK::")));
    connection.receive(32);
}

/// A server of the library's endpoint that is no service, and its folder.
struct PlacedServer {
    explicit PlacedServer(const ServerProcess::Serve& serve)
        : server(folder.path() / "OrvelAnalyticsRpcEndpoint.sock", ::geteuid(), serve) {}

    TemporaryFolder folder;
    ServerProcess server;
};

Circumstance withServer(const std::string& name, const ServerProcess::Serve& serve) {
    const auto placed = std::make_shared<PlacedServer>(serve);
    return {name, placed->folder.path(), false, 1, placed};
}

}  // namespace

Application::Application()
    : session(kName, kVersion),
      dataClass({field(ORVEL_TEXT("count"), ORVEL_TEXT("integer"), ORVEL_TEXT("false")),
                 field(ORVEL_TEXT("text"), ORVEL_TEXT("varchar(5)"))}) {
    collect(*this, ORVEL_TEXT("{\"count\":1}"));
}

std::vector<Operation> operations() {
    std::vector<Operation> all;
    for (const auto& some :
         {operationsOnObjects(), operationsOnEvents(), operationsOnTheService()}) {
        for (const Operation& operation : some) {
            all.push_back({operation.name, [run = operation.run](Application& application) {
                               try {
                                   run(application);
                               } catch (const char*) {
                                   // What is refused so leaves no less behind.
                               } catch (const std::exception&) {
                                   // Nor does this.
                               }
                           }});
        }
    }
    return all;
}

std::vector<Circumstance> circumstances() {
    const auto service = std::make_shared<ServiceProcess>(ORVEL_SERVICE_PROGRAM);
    service->start();
    const auto killed = std::make_shared<ServiceProcess>(ORVEL_SERVICE_PROGRAM);
    killed->start();
    killed->kill();
    const auto nobody = std::make_shared<TemporaryFolder>();
    return {
        {"a service", service->endpointFolder(), false, 0, service},
        {"nobody there", nobody->path(), false, 22, nobody},
        {"a service that was killed", killed->endpointFolder(), false, 22, killed},
        withServer("a server that leaves in mid-command", leaveInMidCommand),
        withServer("a server that says nonsense", sayNonsense),
        {"exhausted descriptors", service->endpointFolder(), true, 1, service},
    };
}

InCircumstance::InCircumstance(const Circumstance& circumstance) : circumstance_(circumstance) {
    ::setenv("ORVEL_RPC_DIRECTORY", circumstance.folder.c_str(), 1);
}

InCircumstance::~InCircumstance() { ::unsetenv("ORVEL_RPC_DIRECTORY"); }

void InCircumstance::begin() {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    descriptors_ = limit.rlim_cur;
    if (circumstance_.withoutDescriptors) {
        limit.rlim_cur = 0;
        ::setrlimit(RLIMIT_NOFILE, &limit);
    }
}

void InCircumstance::end() {
    rlimit limit{};
    ::getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = descriptors_;
    ::setrlimit(RLIMIT_NOFILE, &limit);
}

}  // namespace Orvel::HostTests

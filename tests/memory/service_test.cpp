/// Memory runs out in the other operations that reach the service.

#include "memory/memory_test.h"
#include "support/consent_documents.h"
#include "support/session_access.h"

namespace Orvel::TestSupport {
namespace {

using Analytics::Session::SessionAccess;
using nlohmann::json;
using Result = SessionScene::Result;
using Answer = ProcessingPermissions::ProcessingPermissionValue;

using RegisteringWithoutMemory = MemoryTest;
using ConsentWithoutMemory = MemoryTest;

/// A session, and records for it to fill.
struct RecordsScene : SessionScene {
    using SessionScene::SessionScene;

    ConsentObject consent;
    PrivacyDocuments documents;
};

WideString wide(const json& text) { return toWide(text.get<std::string>()); }

bool isOldOrNew(const WideString& text, const char* member) {
    return text == ORVEL_TEXT("as it was") || text == wide(privacyDocument().at(member));
}

TEST_F(RegisteringWithoutMemory, LeavesTheQueueAsItWas) {
    exhaustion("RegisterDataClass")
        .run(
            sessionWith(2),
            [](SessionScene& scene) {
                scene.evt.version = ORVEL_TEXT("a version of more than a few letters");
                scene.result = scene.session.RegisterDataClass(&scene.evt);
            },
            [](SessionScene& scene, bool raised) {
                const WideString& tag = SessionAccess::appSession(scene.session).versionTag;
                if (raised) {
                    EXPECT_TRUE(tag.empty() || tag == scene.evt.version);
                } else {
                    EXPECT_EQ(scene.result, Result::Success);
                    EXPECT_EQ(tag, scene.evt.version);
                    EXPECT_EQ(scene.service.commands().size(), 1u);
                }
                EXPECT_EQ(scene.queue(), scene.collected);
                EXPECT_TRUE(scene.isSameSession());
                scene.expectUsable();
            });
}

TEST_F(ConsentWithoutMemory, IsReadWholeOrNotAtAll) {
    exhaustion("GetConsent")
        .run(
            [&] {
                auto scene = std::make_unique<RecordsScene>(service());
                scene->consent.tenant = ORVEL_TEXT("as it was, whatever becomes of the rest");
                return scene;
            },
            [](RecordsScene& scene) { scene.result = scene.session.GetConsent(&scene.consent); },
            [](RecordsScene& scene, bool raised) {
                const ConsentObject& consent = scene.consent;
                if (raised) {
                    EXPECT_EQ(consent.tenant,
                              ORVEL_TEXT("as it was, whatever becomes of the rest"));
                    EXPECT_TRUE(consent.timestamp.empty());
                    EXPECT_TRUE(consent.privacyDocuments.privacyUrl.empty());
                    EXPECT_EQ(consent.processingPermissions.marketing, Answer::Unknown);
                } else {
                    EXPECT_EQ(scene.result, Result::Success);
                    EXPECT_EQ(consent.tenant, wide(consentDocument().at("tenant")));
                    EXPECT_EQ(consent.timestamp, wide(consentDocument().at("timestamp")));
                    EXPECT_EQ(consent.privacyDocuments.telemetryUrl,
                              wide(privacyDocument().at("telemetryurl")));
                    EXPECT_EQ(consent.processingPermissions.marketing, Answer::Accepted);
                }
                scene.expectUsable();
            });
}

TEST_F(ConsentWithoutMemory, IsSetAtMostOnce) {
    exhaustion("SetConsent")
        .run(
            sessionWith(2),
            [](SessionScene& scene) {
                ProcessingPermissions permissions;
                permissions.support = Answer::Rejected;
                scene.result = scene.session.SetConsent(permissions);
            },
            [](SessionScene& scene, bool raised) {
                const std::vector<WideString> commands = scene.service.commands();
                EXPECT_EQ(scene.result, Result::Success);
                EXPECT_TRUE(commands.size() == 1 || (raised && commands.empty()));
                for (const WideString& command : commands) {
                    EXPECT_TRUE(command.starts_with(
                        ORVEL_TEXT(R"(AnApplication::SET_CONSENT::{"marketing":"Unknown")")));
                }
                EXPECT_EQ(scene.queue(), scene.collected);
                scene.expectUsable();
            });
}

TEST_F(ConsentWithoutMemory, LeavesEachAddressAsItWasOrAsItIsNow) {
    exhaustion("GetDocumentURLs")
        .run(
            [&] {
                auto scene = std::make_unique<RecordsScene>(service());
                PrivacyDocuments& documents = scene->documents;
                documents.privacyUrl = documents.warrantyUrl = documents.telemetryUrl =
                    ORVEL_TEXT("as it was");
                return scene;
            },
            [](RecordsScene& scene) {
                scene.result = scene.session.GetDocumentURLs(&scene.documents);
            },
            [](RecordsScene& scene, bool raised) {
                const PrivacyDocuments& documents = scene.documents;
                EXPECT_TRUE(isOldOrNew(documents.privacyUrl, "privacyurl"));
                EXPECT_TRUE(isOldOrNew(documents.warrantyUrl, "warrantyurl"));
                EXPECT_TRUE(isOldOrNew(documents.telemetryUrl, "telemetryurl"));
                if (!raised) {
                    EXPECT_EQ(scene.result, Result::Success);
                    EXPECT_NE(documents.telemetryUrl, ORVEL_TEXT("as it was"));
                }
                scene.expectUsable();
            });
}

}  // namespace
}  // namespace Orvel::TestSupport

#ifndef ORVEL_ANALYTICS_SESSION_H
#define ORVEL_ANALYTICS_SESSION_H

#include <cstdint>
#include <list>

#include "orvel/analytics/app_session.h"
#include "orvel/analytics/consent_object.h"
#include "orvel/analytics/data_class.h"
#include "orvel/analytics/export.h"
#include "orvel/analytics/privacy_documents.h"
#include "orvel/analytics/processing_permissions.h"
#include "orvel/analytics/result.h"
#include "orvel/analytics/text.h"

/// @file
/// The session: the one object through which an application reports its events.

namespace Orvel::Analytics::Session {
struct ParsedEvent;
struct SessionAccess;
}  // namespace Orvel::Analytics::Session

/// An application's session with the analytics service of this machine.
///
/// The session holds the application's identity and the events collected but not yet sent; it keeps
/// no connection, starts no thread, and stores nothing outside memory. Queued events are lost when
/// it is destroyed.
///
/// Threads: one session is used by one thread at a time; different sessions are independent.
///
/// Errors: an operation that talks to the service returns an `AnalyticsResult`. A reply that cannot
/// be read is raised as `Orvel::Analytics::hresult_error`, exhausted memory as `std::bad_alloc`.
///
/// Exhausted memory: any operation that is not `noexcept` may raise it, except `SetStartTime` and
/// `SetEndTime`. It then has leaked nothing, and session and arguments are as they were, unless the
/// operation says what else may be. The session can be used as before.
class ORVEL_ANALYTICS_EXPORT AnalyticsSession {
  public:
    /// Starts a session. Does not talk to the service.
    /// @param appName the application's name; not empty.
    /// @param appVersion the application's version; not empty.
    /// @param userId the user's identifier, a GUID in braces such as
    ///     `{0f8fad5b-d9cb-469f-a165-70867728950e}`, kept as given; when it is empty, a new one is
    ///     generated for each session.
    /// @param appSessionInitiated how the application session was initiated; kept, never sent.
    /// @throws Orvel::Analytics::hresult_error when the platform does not tell its name and
    ///     version.
    /// @throws std::invalid_argument when the version that the platform tells is no number.
    /// @throws std::out_of_range when the version that the platform tells has more than 64 bits.
    /// @throws std::bad_alloc
    ///
    /// An argument that is refused is raised as a `const char*`, a text that the library owns: "App
    /// name cannot be null or empty", "App version cannot be null or empty" or "UserID must be a
    /// GUID".
    AnalyticsSession(Orvel::WideString appName, Orvel::WideString appVersion,
                     Orvel::WideString userId = {}, Orvel::WideString appSessionInitiated = {});

    /// Copies the identity and every queued event: both sessions would send them.
    AnalyticsSession(const AnalyticsSession& other);
    /// Takes over the identity and the queue; `other` can still collect events.
    AnalyticsSession(AnalyticsSession&& other) noexcept;
    /// Replaces the identity and the queue by copies, both or, when memory runs out, neither.
    AnalyticsSession& operator=(const AnalyticsSession& other);
    /// Replaces the identity and the queue by those of `other`, whose queue is then empty. The
    /// target's own queued events are discarded. Moving a session onto itself changes nothing.
    AnalyticsSession& operator=(AnalyticsSession&& other) noexcept;
    /// Discards every queued event.
    ~AnalyticsSession();

    /// Announces a data class to the service. Its version becomes the version of all events
    /// collected from now on, whether or not the service accepts it. Blocks for as long as the
    /// service takes, at most the RPC client's deadlines.
    /// @param dataClass the data class; borrowed for the call, not null.
    /// @return `Success`; `ServiceUnavailable` or `AccessDenied` when the connection could not be
    ///     opened for that reason; otherwise `GenericError` or the service's own verdict.
    /// @throws Orvel::Analytics::hresult_error when the service's reply cannot be read.
    /// @throws std::bad_alloc The version may have been taken, and the service may have registered
    ///     the data class.
    Orvel::Analytics::Emitters::AnalyticsResult RegisterDataClass(
        Orvel::Analytics::DataClass::BaseDataClass* dataClass);

    /// Checks an event against its data class and queues it. Does not talk to the service.
    /// @param dataClass the event's data class; borrowed for the call, not null.
    /// @param event one JSON object (RFC 8259) of field values, each under its field's `id`, in
    ///     well-formed UTF-16 and nested at most 1,024 deep. Other members are carried along;
    ///     members "DT" and "V" are replaced by the event's time and version.
    /// @return `Success` when the event is queued, otherwise the first rule that it breaks, and
    ///     nothing is queued: `EmptyEvent`, `MalformedJson`, `GenericError` (the value of an
    ///     integer field), `FieldValueTooLong`, `NullValueNotAllowed`.
    /// @throws std::out_of_range when a varchar type's length is not within 32 bits.
    /// @throws std::bad_alloc
    /// @throws std::length_error when the queue is as long as a list can be.
    ///
    /// Nothing is queued when anything is raised. What the data class's `getFields` raises leaves
    /// the operation.
    Orvel::Analytics::Emitters::AnalyticsResult CollectEvent(
        Orvel::Analytics::DataClass::BaseDataClass* dataClass, Orvel::WideString event);

    /// Sends every queued event in one batch and begins a new session. An empty queue is sent as
    /// an empty batch. Delivery is at most once: the queue is emptied before the batch is sent, and
    /// what the service rejects or never receives is lost. Blocks for as long as the service takes,
    /// at most the RPC client's deadlines.
    /// @return `Success`, `GenericError` when the service could not be reached, otherwise the
    ///     service's own verdict.
    /// @throws Orvel::Analytics::hresult_error when the service's reply cannot be read; the session
    ///     has been renewed all the same.
    /// @throws std::bad_alloc either before anything was done, so that queue and session are as
    ///     they were, or after the queue was emptied: the batch was sent or is lost then, and the
    ///     session has been renewed. Whichever it was, sending again sends no event twice.
    Orvel::Analytics::Emitters::AnalyticsResult SendEvents();

    /// Reads the user's consent record. Blocks for as long as the service takes, at most the RPC
    /// client's deadlines.
    /// @param consent the record to fill; borrowed for the call, not null. Every field is replaced
    ///     on success, and none otherwise.
    /// @return `Success`, `GenericError` when the service could not be reached, otherwise the
    ///     service's own verdict.
    /// @throws Orvel::Analytics::hresult_error when the service's reply cannot be read, or when it
    ///     refused the connection without naming an error.
    Orvel::Analytics::Emitters::AnalyticsResult GetConsent(ConsentObject* consent);

    /// Changes the user's processing permissions, all three of them. Blocks for as long as the
    /// service takes, at most the RPC client's deadlines.
    /// @param permissions the new permissions.
    /// @return `Success`, `GenericError` when the service could not be reached, otherwise the
    ///     service's own verdict, such as `UnableToSetConsentForManagedDevice`.
    /// @throws Orvel::Analytics::hresult_error when the service's reply cannot be read.
    /// @throws std::bad_alloc The service may have taken the permissions.
    Orvel::Analytics::Emitters::AnalyticsResult SetConsent(ProcessingPermissions permissions);

    /// Reads the addresses of the privacy documents. Blocks for as long as the service takes, at
    /// most the RPC client's deadlines.
    /// @param documents the record to fill; borrowed for the call, not null.
    /// @return `Success`, or a verdict that came with readable addresses.
    /// @throws Orvel::Analytics::hresult_error when the addresses cannot be read: so does every
    ///     failure to reach the service, which leaves none to read.
    /// @throws std::bad_alloc
    ///
    /// Addresses read before a failure stay in the record.
    Orvel::Analytics::Emitters::AnalyticsResult GetDocumentURLs(PrivacyDocuments* documents);

    /// Sets the session's start.
    /// @param time seconds since 1970-01-01 00:00 UTC, not later than now.
    /// @return `Success`, or `StartTimeInFuture`, and nothing changes.
    Orvel::Analytics::Emitters::AnalyticsResult SetStartTime(std::int64_t time);

    /// Sets the session's end.
    /// @param time seconds since 1970-01-01 00:00 UTC, not before the start. The difference is
    ///     taken on 32 bits: an end 2^31 seconds or more after the start counts as before it.
    /// @return `Success`, or `EndTimeBeforeStartTime`, and nothing changes.
    Orvel::Analytics::Emitters::AnalyticsResult SetEndTime(std::int64_t time);

  private:
    friend struct Orvel::Analytics::Session::SessionAccess;

    void InitAppSession(Orvel::WideString appName, Orvel::WideString appVersion,
                        Orvel::WideString userId, Orvel::WideString appSessionInitiated);
    void RefreshSession();
    void SetAppSessionInitiated(Orvel::WideString appSessionInitiated);

    static Orvel::WideString getJSonStr(Orvel::Analytics::DataClass::BaseDataClass* dataClass);
    static Orvel::Analytics::Emitters::AnalyticsResult validateEvent(
        Orvel::Analytics::DataClass::BaseDataClass* dataClass,
        Orvel::Analytics::Session::ParsedEvent& event);
    Orvel::WideString getEventData(Orvel::Analytics::DataClass::BaseDataClass* dataClass,
                                   Orvel::Analytics::Session::ParsedEvent& event) const;
    Orvel::WideString generateEventsJsonStr() const;

    Orvel::Analytics::Session::AppSession appSession;
    std::int64_t endTime = 0;
    std::list<Orvel::WideString> eventQueue;
    bool userIdSupplied = false;
};

#endif

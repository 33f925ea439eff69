#ifndef ORVEL_LIBRARY_HOST_OPERATIONS_H
#define ORVEL_LIBRARY_HOST_OPERATIONS_H

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "orvel/analytics.h"
#include "support/data_classes.h"

/// @file
/// Everything that an application may do with the library, in good and bad circumstances.

namespace Orvel::HostTests {

/// What an application keeps, with an event in its queue.
struct Application {
    Application();

    AnalyticsSession session;
    TestSupport::TestDataClass dataClass;
    ConsentObject consent;
    PrivacyDocuments documents;
};

/// What it does. Errors that the library raises stay inside.
struct Operation {
    std::string name;
    std::function<void(Application&)> run;
};

/// Every public operation, with arguments that are good and with arguments that are refused.
std::vector<Operation> operations();

/// A service that the library finds in the meantime, or does not find.
struct Circumstance {
    std::string name;
    /// The folder of its endpoint.
    std::string folder;
    bool withoutDescriptors = false;
    /// What registering a data class gives then, as a number.
    int result = 0;
    /// Whatever serves there.
    std::shared_ptr<void> server;
};

/// A service that answers, and every kind of service that does not.
std::vector<Circumstance> circumstances();

/// Makes a circumstance that of this process, for its lifetime.
class InCircumstance {
  public:
    explicit InCircumstance(const Circumstance& circumstance);
    InCircumstance(const InCircumstance&) = delete;
    InCircumstance& operator=(const InCircumstance&) = delete;
    ~InCircumstance();

    /// Takes the descriptors away that the circumstance lacks.
    void begin();
    void end();

  private:
    const Circumstance& circumstance_;
    unsigned long descriptors_ = 0;
};

}  // namespace Orvel::HostTests

#endif

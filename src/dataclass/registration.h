#ifndef ORVEL_DATACLASS_REGISTRATION_H
#define ORVEL_DATACLASS_REGISTRATION_H

#include "orvel/analytics/data_class.h"
#include "orvel/analytics/text.h"

namespace Orvel::Analytics::DataClass {

/// The document that announces a data class to the service: its name, identifier, version and
/// fields as they are, nothing checked and nothing left out.
WideString registrationDocument(BaseDataClass& dataClass);

}  // namespace Orvel::Analytics::DataClass

#endif

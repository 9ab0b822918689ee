// The library's exported constants.
#pragma once

#include <string_view>

#include "kestrelink/platform/Export.h"
#include "kestrelink/saml/elements/SAMLErrors.h"  // IWYU pragma: export

namespace kestrelink {

/// The action "Play", for authorisation decision queries.
KESTRELINK_EXPORT extern const std::string_view SAMLAuthZDecisionQueryActionPlay;

/// Names under which providers send a subscriber's attributes (CableLabs OLCA attribute profile),
/// for `SAMLResponse::attributeValuesForName`.
KESTRELINK_EXPORT extern const std::string_view SAMLAttributePropertyNameUserID;
KESTRELINK_EXPORT extern const std::string_view SAMLAttributePropertyNameHouseholdID;
KESTRELINK_EXPORT extern const std::string_view SAMLAttributePropertyNameTransientID;
KESTRELINK_EXPORT extern const std::string_view SAMLAttributePropertyNameAuthenticationTTL;
KESTRELINK_EXPORT extern const std::string_view SAMLAttributePropertyNameHBAStatus;
KESTRELINK_EXPORT extern const std::string_view SAMLAttributePropertyNamePostalCodes;
KESTRELINK_EXPORT extern const std::string_view SAMLAttributePropertyNameChannelIDs;
KESTRELINK_EXPORT extern const std::string_view SAMLAttributePropertyNameLanguage;
KESTRELINK_EXPORT extern const std::string_view SAMLAttributePropertyNameAccountProviderID;
KESTRELINK_EXPORT extern const std::string_view SAMLAttributePropertyNameMaxMPAAContentRating;
KESTRELINK_EXPORT extern const std::string_view SAMLAttributePropertyNameMaxVCHIPContentRating;

}  // namespace kestrelink

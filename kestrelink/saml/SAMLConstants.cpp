#include "kestrelink/saml/SAMLConstants.h"

namespace kestrelink {

constinit const std::string_view SAMLAuthZDecisionQueryActionPlay = "Play";
constinit const std::string_view SAMLAttributePropertyNameUserID =
    "urn:cablelabs:olca:1.0:attribute:subscriber:identifier";
constinit const std::string_view SAMLAttributePropertyNameHouseholdID = "HouseholdID";
constinit const std::string_view SAMLAttributePropertyNameTransientID =
    "urn:oasis:names:tc:SAML:2.0:nameid-format:transient";
constinit const std::string_view SAMLAttributePropertyNameAuthenticationTTL = "AuthenticationTTL";
constinit const std::string_view SAMLAttributePropertyNameHBAStatus = "HBAStatus";
constinit const std::string_view SAMLAttributePropertyNamePostalCodes = "PostalCodes";
constinit const std::string_view SAMLAttributePropertyNameChannelIDs =
    "urn:cablelabs:olca:1.0:attribute:authz:channelID";
constinit const std::string_view SAMLAttributePropertyNameLanguage = "Language";
constinit const std::string_view SAMLAttributePropertyNameAccountProviderID = "AccountProviderID";
constinit const std::string_view SAMLAttributePropertyNameMaxMPAAContentRating =
    "urn:cablelabs:olca:1.0:attribute:authz:maxMPAA";
constinit const std::string_view SAMLAttributePropertyNameMaxVCHIPContentRating =
    "urn:cablelabs:olca:1.0:attribute:authz:maxVCHIP";

}  // namespace kestrelink

// "VnMembership.User": people of the membership directory.
//
// The section MEMBERSHIP of the site configuration says where the directory is: LDAPServer is a URL
// ("ldap://host:port"), or empty for the file directory.ldif beside the configuration file. LDAPRoot is the
// part of the directory to look in. People are inetOrgPerson entries found by uid, with the suite's own
// attributes orvaneLanguageID, orvaneLocale, orvaneBusinessPartner, orvaneEngineerCode, orvaneSalutationFlag,
// orvaneModem and orvaneCountry.
#pragma once

#include "platform/automation/class_table.hpp"

namespace VnMembership {

void RegisterUser(automation::ClassTable& classes);

}  // namespace VnMembership

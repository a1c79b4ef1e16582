#include <fstream>
#include <system_error>

#include "demo/demo_suite.hpp"

namespace demo {
namespace {

// Customers in four languages, the account that prospects ask under, and two engineers.
constexpr std::string_view kPeople = R"(
dn: uid=prospect
objectClass: inetOrgPerson
objectClass: orvanePerson
uid: prospect
cn: Visitor of the web site
givenName: Visitor
sn: of the web site
orvaneLanguageID: 1033
orvaneLocale: 1033
orvaneBusinessPartner: 0
orvaneSalutationFlag: TRUE

dn: uid=jdoe
objectClass: inetOrgPerson
objectClass: orvanePerson
uid: jdoe
cn: Jane Doe
givenName: Jane
sn: Doe
mail: jane.doe@harbour.example
o: Harbour Works
telephoneNumber: +44 20 5550 0101
title: Maintenance lead
facsimileTelephoneNumber: +44 20 5550 0102
orvaneLanguageID: 1033
orvaneLocale: 1033
orvaneBusinessPartner: 1042
orvaneSalutationFlag: FALSE
orvaneCountry: United Kingdom

dn: uid=mjansen
objectClass: inetOrgPerson
objectClass: orvanePerson
uid: mjansen
cn: Marieke Jansen
givenName: Marieke
sn: Jansen
mail: m.jansen@polder.example
o: Polder Waterbeheer
telephoneNumber: +31 20 555 0103
title: Technisch beheerder
orvaneLanguageID: 1043
orvaneLocale: 1043
orvaneBusinessPartner: 1043
orvaneSalutationFlag: TRUE
orvaneCountry: Nederland

dn: uid=hmueller
objectClass: inetOrgPerson
objectClass: orvanePerson
uid: hmueller
cn:: SGVsZ2EgTcO8bGxlcg==
givenName: Helga
sn:: TcO8bGxlcg==
mail: helga.mueller@werk2.example
o:: V2VyayAyIFLDtmhyZW5iYXU=
telephoneNumber: +49 30 555 0104
orvaneLanguageID: 1031
orvaneLocale: 1031
orvaneBusinessPartner: 0
orvaneSalutationFlag: FALSE
orvaneCountry: Deutschland

dn: uid=ksato
objectClass: inetOrgPerson
objectClass: orvanePerson
uid: ksato
cn:: 5L2Q6JekIOWBpQ==
givenName:: 5YGl
sn:: 5L2Q6Jek
mail: ken.sato@osaka.example
o: Osaka Pumps
telephoneNumber: +81 6 5550 0105
orvaneLanguageID: 1041
orvaneLocale: 1041
orvaneBusinessPartner: 2077
orvaneSalutationFlag: FALSE
orvaneCountry: Japan

dn: uid=lberg
objectClass: inetOrgPerson
objectClass: orvanePerson
uid: lberg
cn: Lena Berg
givenName: Lena
sn: Berg
mail: lena.berg@orvane.example
o: Orvane Service
orvaneLanguageID: 1033
orvaneLocale: 1033
orvaneBusinessPartner: 0
orvaneEngineerCode: eng-17
orvaneSalutationFlag: FALSE

dn: uid=tvos
objectClass: inetOrgPerson
objectClass: orvanePerson
uid: tvos
cn: Tom Vos
givenName: Tom
sn: Vos
mail: tom.vos@orvane.example
o: Orvane Service
orvaneLanguageID: 1043
orvaneLocale: 1043
orvaneBusinessPartner: 0
orvaneEngineerCode: eng-23
orvaneSalutationFlag: FALSE
)";

}  // namespace

void FillPeople(const Place& place) {
  std::ofstream stream(place.directory, std::ios::binary | std::ios::app);
  stream << kPeople;
  stream.close();
  if (!stream) {
    throw std::filesystem::filesystem_error("cannot write", place.directory,
                                            std::make_error_code(std::errc::io_error));
  }
}

}  // namespace demo

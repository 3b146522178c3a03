// SPDX-License-Identifier: Apache-2.0
// The names are those of the GNU C library's locales (glibc 2.36), kept here so that
// a report does not change with the machine that writes it.
#include "tools/formats/detail/languages.h"
#include "tools/formats/datetime.h"
#include "tools/util/detail/site_setting.h"

#include <atomic>

namespace kaz::dates {

namespace {

constexpr const char* usualDateTime = "%a %d %b %Y %H:%M:%S";

constexpr Language languages[] = {
    {"en",
     {"January", "February", "March", "April", "May", "June", "July", "August", "September",
      "October", "November", "December"},
     {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"},
     {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"},
     {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"},
     "%m/%d/%y",
     "%a %b %e %H:%M:%S %Y",
     "%-d %B %Y"},
    {"de",
     {"Januar", "Februar", "März", "April", "Mai", "Juni", "Juli", "August", "September", "Oktober",
      "November", "Dezember"},
     {"Jan", "Feb", "Mär", "Apr", "Mai", "Jun", "Jul", "Aug", "Sep", "Okt", "Nov", "Dez"},
     {"Sonntag", "Montag", "Dienstag", "Mittwoch", "Donnerstag", "Freitag", "Samstag"},
     {"So", "Mo", "Di", "Mi", "Do", "Fr", "Sa"},
     "%d.%m.%Y",
     usualDateTime,
     "%-d. %B %Y"},
    {"es",
     {"enero", "febrero", "marzo", "abril", "mayo", "junio", "julio", "agosto", "septiembre",
      "octubre", "noviembre", "diciembre"},
     {"ene", "feb", "mar", "abr", "may", "jun", "jul", "ago", "sep", "oct", "nov", "dic"},
     {"domingo", "lunes", "martes", "miércoles", "jueves", "viernes", "sábado"},
     {"dom", "lun", "mar", "mié", "jue", "vie", "sáb"},
     "%d/%m/%Y",
     usualDateTime,
     "%-d de %B de %Y"},
    {"fr",
     {"janvier", "février", "mars", "avril", "mai", "juin", "juillet", "août", "septembre",
      "octobre", "novembre", "décembre"},
     {"janv.", "févr.", "mars", "avril", "mai", "juin", "juil.", "août", "sept.", "oct.", "nov.",
      "déc."},
     {"dimanche", "lundi", "mardi", "mercredi", "jeudi", "vendredi", "samedi"},
     {"dim.", "lun.", "mar.", "mer.", "jeu.", "ven.", "sam."},
     "%d/%m/%Y",
     usualDateTime,
     "%-d %B %Y"},
    {"it",
     {"gennaio", "febbraio", "marzo", "aprile", "maggio", "giugno", "luglio", "agosto", "settembre",
      "ottobre", "novembre", "dicembre"},
     {"gen", "feb", "mar", "apr", "mag", "giu", "lug", "ago", "set", "ott", "nov", "dic"},
     {"domenica", "lunedì", "martedì", "mercoledì", "giovedì", "venerdì", "sabato"},
     {"dom", "lun", "mar", "mer", "gio", "ven", "sab"},
     "%d/%m/%Y",
     usualDateTime,
     "%-d %B %Y"},
    {"nl",
     {"januari", "februari", "maart", "april", "mei", "juni", "juli", "augustus", "september",
      "oktober", "november", "december"},
     {"jan", "feb", "mrt", "apr", "mei", "jun", "jul", "aug", "sep", "okt", "nov", "dec"},
     {"zondag", "maandag", "dinsdag", "woensdag", "donderdag", "vrijdag", "zaterdag"},
     {"zo", "ma", "di", "wo", "do", "vr", "za"},
     "%d-%m-%Y",
     usualDateTime,
     "%-d %B %Y"},
};

/// Null while the configuration decides.
constinit std::atomic<const Language*> chosen = nullptr;

} // namespace

const Language& english() {
    return languages[0];
}

const Language* findLanguage(std::string_view code) {
    for (const Language& language : languages)
        if (language.code == code)
            return &language;
    return nullptr;
}

/// The configuration is asked each time: it may be read, or change, after the first date. A code
/// that is not known there is no error, since a report must be written all the same.
const Language& languageInForce() {
    if (const Language* language = chosen)
        return *language;
    const char* code = kaz::detail::siteSetting("date_language");
    const Language* language = code != nullptr ? findLanguage(code) : nullptr;
    return language != nullptr ? *language : english();
}

} // namespace kaz::dates

bool date_set_language(const char* language) {
    const bool isReset = language == nullptr || *language == '\0';
    const auto* found = isReset ? nullptr : kaz::dates::findLanguage(language);
    if (found == nullptr && !isReset)
        return false;
    kaz::dates::chosen = found;
    return true;
}

const char* date_language() {
    return kaz::dates::languageInForce().code.data();
}

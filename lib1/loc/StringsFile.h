#pragma once

namespace rdr {
class InStream;
}

/// Files of translations: one for a locale and a directory, in a part of the syntax of PO files.
///
/// An entry is a line `msgid "..."` and a line `msgstr "..."`; either may go on in lines that are
/// quoted strings alone. Empty lines separate entries, lines with '#' in front are comments, and an
/// entry with an empty id is skipped. There are no contexts, plural ids or flags: plural forms are
/// entries of their own, with suffixes behind the id. See unescapeString.h for quoted strings.
///
/// Files that gettext's tools write can be read in their default layout, wrapped or not; the
/// encoding is UTF-8 whatever the header says, and fuzzy entries count. What is not supported is
/// reported line by line: a context is left out, and an entry with a plural id stays without a text
/// of its own, so that it takes that of the entry behind it.
///
/// The cost grows with the length of the file alone. A line has at most 262144 bytes.
/// Threads: the manager's texts are changed without a lock, see Localize.
namespace loc {

class Localize;

/// Adds the texts of `directory`/strings.`locale`.po to the manager. Returns whether the file was
/// read to its end.
/// Errors: a missing file is none. One that cannot be read is logged; the entries that were read
/// stay.
bool loadStringsFile(const char* directory, const char* locale, Localize* manager);

/// Adds the texts of a stream to the manager.
/// Errors: a bad line is logged, with the file's name and the line's number, and left out. Passes
/// on what reading throws; the entries that were read stay.
void readStringsFile(rdr::InStream* stream, const char* fileName, const char* locale,
                     Localize* manager);

} // namespace loc

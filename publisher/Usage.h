// What klnpub --help says.
#pragma once

namespace korlan::publisher {

inline constexpr const char* kUsage = R"(klnpub publishes updates of the Korlan suite and checks what is published.

  klnpub pack NAME --from STAGING --to SERVER [--replace]
      Makes the files of the folder STAGING a service pack in the folder SERVER.
      The first level of STAGING says where files go: Root (the program folder),
      JOB LIB SYS KDS_CML KDS_UDN KDS_MOD KDS_SBK KDS_WRK (the folders of the
      installation), anything else below the program folder. Empty folders are
      made on the machines. Nothing on the server is overwritten unless --replace.

  klnpub check SERVER|URL [--installation DIR] [--timeout SECONDS]
      Says what is wrong with a catalogue, one line a finding: pack, row, rule,
      and what it does to users. --installation adds what the wizard of the
      installation in the folder DIR would offer ($KLN_DRIVES names its drives).

  klnpub list SERVER|URL [--timeout SECONDS]
      Shows the packs and their files as a table.

  klnpub note SERVER FILE
      Writes the version note of the wizard FILE (KlnUpdt.EXE): older wizards
      then hand over to their self-update.

Exit code: 0 done, nothing found that costs users an update; 1 such findings, or
publication refused; 2 wrong use; 3 it could not be carried out.

Databases are written in the format Jet 3, one table of five text columns. They
have no indexes, not even on the system tables: readers that scan tables read
them, but the database engine itself may refuse them, and none was here to try.

Examples:
  klnpub pack SP4 --from build/sp4 --to /srv/www/korlan
  klnpub check /srv/www/korlan
  klnpub check http://update.example.net/korlan --installation /mnt/c/KORLAN
  klnpub list http://update.example.net/korlan
  klnpub note /srv/www/korlan build/KlnUpdt.EXE
)";

} // namespace korlan::publisher

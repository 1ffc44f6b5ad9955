#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "mapping/job_settings.h"

namespace rlx::lpd {

/// Divides what was given with lpr -Z into options: "form=INVOICE,lpi=8". Options are parted by
/// commas (by which LPRng joins several -Z) or blanks. A word without "=" is an option without a
/// value, or belongs to the list of the media in front of it: "media=A4,tray-2".
std::vector<spooler::JobOption> divide_options(std::string_view text);

/// Puts options into settings. Unlike a spooler with options of its own, LPRng hands over what the
/// user wrote for this program and nothing else, so a name that nobody knows is a fault.
/// @param copies_sent  so often LPRng sends this file by itself (lpr -K); more than 1 does not go
///                     together with more than one copy by the printer.
/// @return what is wrong, for people; empty when nothing is.
std::string read_options(const std::vector<spooler::JobOption>& options, unsigned copies_sent,
                         spooler::JobSettings& settings);

/// How often LPRng sends a file of a job: lpr -K 3 lists it three times, and the filter runs for
/// each of them.
/// @param ticket     the job's ticket, LPRng's hold file, as the environment has it ($HF). Its line
///                   "hfdatafiles=" has, parted by 0x01, the files of the job in the order of
///                   printing, each of fields parted by 0x02: "copies=0x1", "dftransfername=NAME".
/// @param data_file  the name of the file.
/// @return at least 1; 1 for a ticket that does not name the file.
unsigned copies_sent(std::string_view ticket, std::string_view data_file);

}  // namespace rlx::lpd

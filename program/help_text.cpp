#include "help_text.h"

const char* const kVersionText = "tarvane " TARVANE_VERSION "\n";

const char* const kHelpText = R"(Usage: tarvane [LEFT [RIGHT]]
  or:  tarvane copy [OPTION]... SOURCE... DESTINATION
  or:  tarvane copy [OPTION]... -t DIRECTORY SOURCE...
  or:  tarvane move [OPTION]... SOURCE... DESTINATION
  or:  tarvane move [OPTION]... -t DIRECTORY SOURCE...
  or:  tarvane tracks [--json] [DEVICE]
  or:  tarvane help [COMMAND]
Copy or move files, directories and audio-CD tracks with progress, questions
about taken names and a clean end; or list the tracks of an audio CD. Without a
command, show the directories LEFT and RIGHT in two panes, where F1 tells the
keys.

When a name is taken:
      --on-conflict=CHOICE   for a file: ask, overwrite, skip, older, compare,
                             larger, size-differs, keep-both or fail; default is
                             ask on a terminal, otherwise fail
      --on-directory-conflict=CHOICE
                             for a directory: ask, merge, skip or fail; default
                             is ask when files are asked about, otherwise merge
  -i, --interactive          the same as --on-conflict=ask
  -f, --force                the same as --on-conflict=overwrite
  -n, --no-clobber           the same as --on-conflict=skip
  -u, --update               the same as --on-conflict=older
      --update=WHEN          as in cp: older, all (overwrite), none (skip) or
                             none-fail (fail)

Where to:
  -t, --target-directory=DIRECTORY
                             put all sources into DIRECTORY
  -T, --no-target-directory  take DESTINATION as the new name, even when it is
                             a directory

What comes along:
  -p, --preserve             the same as --preserve=mode,times,owner
      --preserve=LIST        mode, times, owner (root only) or all, also cp's
                             words ownership and timestamps; default is
                             mode,times, for root on a move all
      --no-preserve          contents only

What is shown:
      --progress=STYLE       auto (default), live, lines, json or none
      --interval=SECONDS     time between two lines, 0.1 to 3600 (default 5)
  -q, --quiet                no progress, only errors and questions
  -v, --verbose              say what goes where and what becomes of taken
                             names

Before and after:
      --dry-run              look through the sources, say what was found
      --no-preflight         look only for what must not be removed or opened
      --follow-links         write through links at the destination, and let a
                             move remove files through links to directories
      --flush=WHEN           wait until all is written to the device: auto
                             (default: removable and network disks), always or
                             never

Others:
  -r, -R, --recursive        ignored, directories are always copied whole
                             (copy only)
      --json                 print the list as JSON (tracks only)
  -h, --help                 print this help and end
      --version              print the version and end

The tracks of an audio CD are cdda:/dev/sr0/3 or 'cdda:/dev/sr0/Track 03.wav',
all of them cdda:/dev/sr0. Esc or Ctrl-C cancels a transfer.
Exit status: 0 done, 1 failed, 2 wrong usage, 130 canceled, 128 + N after
signal N.
)";

const char* const kTracksHelpText = R"(Usage: tarvane tracks [--json] [DEVICE]
List the tracks of the audio CD in DEVICE, by default in the first optical
drive that has one.

      --json     print one JSON document
  -h, --help     print this help and end
      --version  print the version and end

Start and length are minutes:seconds.frames; a second has 75 frames. The total
is that of the audio tracks. Copy one track, or all of them, with
  tarvane copy 'cdda:/dev/sr0/Track 03.wav' DIRECTORY
  tarvane copy cdda:/dev/sr0 DIRECTORY
)";

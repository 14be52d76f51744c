// The commands of the program, a file for each. A function adds its command, which runs when the program's command line
// names it, and throws as told in messages.h. Clocks are those of progress lines.
#pragma once

#include "standalone/zvk/session/progress.h"

namespace CLI {
class App;
}

namespace standalone {

// `zvk scale`: one image file into another of a different size.
void AddScaleCommand(CLI::App &program, const ProgressLine::Clock &clock);

// `zvk filter`: applies a filter of the image class, whichever there are, to an image file.
void AddFilterCommand(CLI::App &program);

// `zvk rotate`: turns an image by any angle.
void AddRotateCommand(CLI::App &program);

// `zvk mirror`: exchanges the sides of an image.
void AddMirrorCommand(CLI::App &program);

// `zvk combine`: lays one image on another, through a mask or with a colour.
void AddCombineCommand(CLI::App &program);

// `zvk sheet`: lays pictures out in rows and columns of one picture, with their names under them.
void AddSheetCommand(CLI::App &program);

// `zvk info`: what an image file holds, and what its pixels take in each kind of storage.
void AddInfoCommand(CLI::App &program);

// `zvk run`: a program in Lua that uses the plug-in's classes.
void AddRunCommand(CLI::App &program);

// `zvk batch`: a script over many files, a process for each.
void AddBatchCommand(CLI::App &program, const ProgressLine::Clock &clock);

// `zvk methods`: the classes as they are registered.
void AddMethodsCommand(CLI::App &program);

// `zvk fuzz`: random calls of everything that the plug-in offers.
void AddFuzzCommand(CLI::App &program);

// `zvk completion`: completion of the whole command line in a shell.
void AddCompletionCommand(CLI::App &program);

// `zvk manual`: the manual page of the whole command line.
void AddManualCommand(CLI::App &program);

}  // namespace standalone

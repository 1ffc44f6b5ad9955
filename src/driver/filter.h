#pragma once

#include "driver/loop/loop_state.h"
#include "driver/options/capabilities.h"
#include "driver/options/options.h"

namespace rlx {

/// The whole filter: every module's state, and which module is handed what. Read from top to bottom
/// it is the way of a job, from the command line and standard input to the printer's bytes on
/// standard output.
///
/// There is one in a process. It is large, mostly buffers, which nobody clears: their lengths tell
/// which of their bytes count.
struct Filter {
  // What is known before the first byte is read.
  Messages messages;
  Capabilities printer;
  CommandLine command_line;
  SettingsRecord settings;
  ResourceDirectories directories;
  EnvironmentFile environment;

  // What the job changes.
  JobState job;
  PrintConditions conditions;

  // Input: bytes, from frames with option -d; commands; commands with their text classified.
  ByteSource source{command_line, messages};
  Tokenizer tokenizer{source, command_line};
  Classifier classifier{tokenizer};

  // Output: pages of counted blocks with a job header in front, or frames; standard output.
  ByteWriter writer;
  CarriedSettings carried{writer};
  JobHeader header{writer, command_line, job, conditions};
  PageWriter page{writer, carried, header, job};
  FrameWriter frame_writer{source.frames};
  PieceOutput output{command_line, page, frame_writer};
  LineSpacing spacing{command_line, job};
  ConditionsOutput conditions_output{command_line, output, carried, spacing};

  // Forms, and the fonts of user-defined characters.
  FormReading forms{command_line, environment, messages};
  FalLibrary library{messages, job};
  FontSets fonts{library};
  Gaiji gaiji{fonts, command_line, job};

  // The main loop, which takes each command from the input to the output.
  LoopState loop{{command_line, messages, settings, job, conditions, source, classifier, writer,
                  carried, output, spacing, conditions_output, forms, directories, fonts, gaiji}};

  Filter() = default;
  // Its modules hold on to one another.
  Filter(const Filter&) = delete;
  Filter& operator=(const Filter&) = delete;
};

}  // namespace rlx

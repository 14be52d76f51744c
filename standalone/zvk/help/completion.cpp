#include "standalone/zvk/help/completion.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <sstream>
#include <string_view>
#include <vector>

#include "standalone/zvk/help/choice_words.h"
#include "standalone/zvk/help/command_line.h"
#include "standalone/zvk/session/messages.h"
#include "standalone/zvk/session/plugin_session.h"

namespace standalone {
namespace {

using Words = std::vector<std::string>;

std::string Joined(const Words &words, std::string_view between = " ") {
  std::string text;
  for (const std::string &word : words) AddToList(text, between, word);
  return text;
}

Words NamesOf(const std::vector<CommandLine> &commands) {
  Words names;
  for (const CommandLine &command : commands) names.push_back(command.name);
  return names;
}

Words OptionNamesOf(const CommandLine &command) {
  Words names;
  for (const OptionLine &option : command.options) names.insert(names.end(), option.names.begin(), option.names.end());
  return names;
}

Words WordsOf(const ValueKind &kind, const PluginSession &session) {
  return kind.choice ? standalone::WordsOf(*kind.choice, session) : Words();
}

// --- bash ---

constexpr char kBashStart[] = R"(# Completion of the command line of zvk in bash, printed by 'zvk completion bash'.

)";

constexpr char kBashEnd[] = R"(
_zvk()
{
    local current=${COMP_WORDS[COMP_CWORD]} command='' option='' position=1 isAssigned='' i word
    local options last values
    COMPREPLY=()

    # What is between the command and the word to complete. Bash takes "--name=value" for three words.
    for ((i = 1; i < COMP_CWORD; ++i)); do
        word=${COMP_WORDS[i]}
        if [[ $word == '=' ]]; then
            isAssigned=yes
            continue
        fi
        if [[ -n $option ]]; then
            option=''
        elif [[ $word == -* && -z $isAssigned ]]; then
            _zvk_values "$command" "$word" && option=$word
        elif [[ -z $command ]]; then
            command=$word
        elif [[ -z $isAssigned ]]; then
            ((++position))
        fi
        isAssigned=''
    done
    if [[ $current == '=' ]]; then
        isAssigned=yes
        current=''
    fi

    _zvk_command "$command" || return
    ((position <= last)) || position=$last
    if [[ -n $option ]]; then
        _zvk_values "$command" "$option"
    elif [[ -n $isAssigned ]]; then
        values='<file>'
    elif [[ $current == -* ]]; then
        values=$options
    else
        _zvk_values "$command" "$position"
    fi

    # Names of files are left to the shell, which knows how to write them.
    if [[ $values == '<file>' ]]; then
        compopt -o default 2>/dev/null
        return
    fi
    for word in $values; do
        [[ ${word,,} != "${current,,}"* ]] || COMPREPLY+=("$word")
    done
    [[ ${COMPREPLY[0]} != *= ]] || compopt -o nospace 2>/dev/null
}

complete -F _zvk zvk
)";

// `name` is that of an option, or the number of an argument.
std::string BashValues(const std::string &command, const std::string &name, const ValueKind &kind,
                       const PluginSession &session) {
  const std::string values = kind.isFile ? "<file>" : Joined(WordsOf(kind, session));
  return "        " + command + ":" + name + ") values='" + values + "' ;;\n";
}

}  // namespace

std::string BashCompletion(CLI::App &program, const PluginSession &session) {
  const std::vector<CommandLine> commands = ReadCommands(program);
  const CommandLine whole = ReadCommand(program);

  std::ostringstream script;
  script << kBashStart;
  script << "# Sets `options` to those of the command, and `last` to the number of its last argument, which is taken\n"
            "# for all that follow.\n"
            "_zvk_command()\n"
            "{\n"
            "    case $1 in\n";
  script << "        '') options='" << Joined(OptionNamesOf(whole)) << "' last=1 ;;\n";
  for (const CommandLine &command : commands) {
    // One that cannot be repeated is followed by a place for nothing.
    const bool isOpen = command.takesMore || (!command.arguments.empty() && command.arguments.back().isRepeated);
    script << "        " << command.name << ") options='" << Joined(OptionNamesOf(command))
           << "' last=" << command.arguments.size() + (isOpen && !command.takesMore ? 0 : 1) << " ;;\n";
  }
  script
      << "        *) return 1 ;;\n"
         "    esac\n"
         "}\n"
         "\n"
         "# Sets `values` to the words that a value of the option or argument $2 of the command $1 is one of. Fails\n"
         "# for an option without a value.\n"
         "_zvk_values()\n"
         "{\n"
         "    case $1:$2 in\n";
  script << "        :1) values='" << Joined(NamesOf(commands)) << "' ;;\n";
  for (const CommandLine &command : commands) {
    for (const OptionLine &option : command.options) {
      if (!option.value.empty())
        script << BashValues(command.name, Joined(option.names, "|" + command.name + ":"), option.kind, session);
    }
    for (size_t i = 0; i < command.arguments.size(); ++i) {
      script << BashValues(command.name, std::to_string(i + 1), command.arguments[i].kind, session);
    }
    if (command.takesMore) {
      script << BashValues(command.name, std::to_string(command.arguments.size() + 1), {true, {}}, session);
    }
  }
  script << "        *)\n"
            "            values=''\n"
            "            return 1\n"
            "            ;;\n"
            "    esac\n"
            "}\n";
  script << kBashEnd;
  return script.str();
}

// --- zsh ---

namespace {

// The start of a description, as far as the first thought goes.
std::string Brief(const std::string &description) {
  size_t end = description.size();
  for (const char *const stop : {". ", "; ", " ["}) end = std::min(end, description.find(stop));
  return description.substr(0, end);
}

// Within single quotes, and with backslashes before what _arguments or _describe would take for its own.
std::string ZshText(const std::string &text, std::string_view special) {
  std::string escaped;
  for (const char letter : text) {
    if (letter == '\'') {
      escaped += "'\\''";
      continue;
    }
    if (letter == '\\' || special.find(letter) != std::string_view::npos) escaped += '\\';
    escaped += letter;
  }
  return escaped;
}

constexpr std::string_view kSpecialInArguments = "[]:";

// What completes a value: ":MESSAGE:ACTION".
std::string ZshAction(const std::string &name, const ValueKind &kind, const PluginSession &session) {
  const Words words = WordsOf(kind, session);
  std::string action = kind.isFile ? "_files" : words.empty() ? " " : "(" + Joined(words) + ")";
  if (kind.choice == Choice::FilterArguments) {
    action = "{if compset -P \"*=\"; then _files; else compadd -S \"\" -- " + Joined(words) + "; fi}";
  }
  return ":" + ZshText(name, kSpecialInArguments) + ":" + action;
}

std::string ZshOption(const OptionLine &option, const PluginSession &session) {
  Words others = option.excludes;
  if (!option.isRepeated) others.insert(others.end(), option.names.begin(), option.names.end());
  const bool endsAll = std::ranges::find(option.names, "--help") != option.names.end() ||
                       std::ranges::find(option.names, "--version") != option.names.end();
  const std::string exclusions = endsAll ? "(- *)" : others.empty() ? "" : "(" + Joined(others) + ")";
  const bool hasValue = !option.value.empty();
  std::string lines;
  for (const std::string &name : option.names) {
    lines += "                '" + exclusions + (option.isRepeated ? "*" : "") + name +
             (hasValue && name.starts_with("--") ? "=" : "") + "[" +
             ZshText(Brief(option.description), kSpecialInArguments) + "]" +
             (hasValue ? ZshAction(option.value, option.kind, session) : "") + "' \\\n";
  }
  return lines;
}

}  // namespace

std::string ZshCompletion(CLI::App &program, const PluginSession &session) {
  const std::vector<CommandLine> commands = ReadCommands(program);
  std::ostringstream script;
  script << "#compdef zvk\n"
            "# Completion of the command line of zvk in zsh, printed by 'zvk completion zsh'.\n"
            "\n"
            "_zvk()\n"
            "{\n"
            "    local curcontext=$curcontext state state_descr line\n"
            "    local -A opt_args\n"
            "    local -a commands\n"
            "    commands=(\n";
  for (const CommandLine &command : commands) {
    script << "        '" << command.name << ":" << ZshText(command.description, ":") << "'\n";
  }
  script << "    )\n"
            "    if ((CURRENT > 2)) && [[ ${words[2]} != -* ]]; then\n"
            "        local command=${words[2]}\n"
            "        curcontext=${curcontext%:*:*}:zvk-$command:\n"
            "        shift words\n"
            "        ((CURRENT--))\n"
            "        case $command in\n";
  for (const CommandLine &command : commands) {
    script << "            " << command.name << ")\n"
           << "                _arguments -S \\\n";
    for (const OptionLine &option : command.options) script << ZshOption(option, session);
    for (const ArgumentLine &argument : command.arguments) {
      script << "                '" << (argument.isRepeated ? "*" : "")
             << ZshAction(argument.name, argument.kind, session) << "' \\\n";
    }
    if (command.takesMore) script << "                '*" << ZshAction("FILE", {true, {}}, session) << "' \\\n";
    script << "                && return\n"
              "                ;;\n";
  }
  script << "        esac\n"
            "        return 1\n"
            "    fi\n"
            "    _arguments \\\n";
  for (const OptionLine &option : ReadCommand(program).options) {
    const std::string lines = ZshOption(option, session);
    script << lines;
  }
  script << "        '1: :{_describe -t commands command commands}'\n"
            "}\n"
            "\n"
            "if [[ ${zsh_eval_context[-1]} == loadautofunc ]]; then\n"
            "    _zvk \"$@\"\n"
            "else\n"
            "    compdef _zvk zvk\n"
            "fi\n";
  return script.str();
}

}  // namespace standalone

#include "ctl/Help.h"

#include "base/CommandTable.h"

namespace quillnest::ctl
{

namespace
{

const char overall[] = R"(usage: quillnestctl COMMAND [ARGUMENT...]
       quillnestctl COMMAND --help
       quillnestctl --version

  post TEXT               post a command to every running instance
  post --list             the commands that the program knows
  state                   what the running instance is doing, as JSON
  settings list           all settings that are set; with --all those that there are
  settings get KEY        one setting
  settings set KEY VALUE  write a setting
  settings unset KEY      back to the default
  log [-f] [-n LINES]     the general log; -f goes on with what is added

Exit status: 0 when it was done, 1 when it could not be, 2 when the command line is wrong.
)";

const char post[] = R"(usage: quillnestctl post TEXT
       quillnestctl post --list

Posts a command to every running instance of this session; nothing answers. A command that ends in a colon takes what
follows it: post "open:Tide". The commands:

)";

const char state[] = R"(usage: quillnestctl state

Prints what the running instance is doing, as JSON: the library, what the interface shows, and for each window its frame
and the counters of its stream. Exit status 1 when no instance runs.
)";

const char settings[] = R"(usage: quillnestctl settings list [--keys | --all]
       quillnestctl settings get [--raw] KEY
       quillnestctl settings set [TYPE] KEY VALUE
       quillnestctl settings unset KEY

A running instance takes a change over at once.

  list           every setting that is set, on a line: its key, a tab, its value as JSON; with --keys the keys alone.
                 With --all every setting that there is: key, type, default, value and meaning, with tabs between them
  get            the value as JSON; with --raw text and bytes as they are, without quotes and line end.
                 Exit status 1 when the setting is absent
  set            VALUE is JSON: true, 5, 0.5, "text", ["a", "b"], {"k": 1}
                 or, with a TYPE, plain text that stands for a value of that type:
    --bool         true or false
    --int          a whole number
    --float        a number
    --text         text as it is
    --data         bytes as base64
  unset          takes the setting away, so that its default holds; nothing happens when it is absent

In JSON bytes are {"$data": "base64"}. A VALUE that begins with two dashes goes behind "--".
)";

const char log[] = R"(usage: quillnestctl log [-f] [-n LINES]

Prints the general log. Exit status 1 when there is none.

  -f, --follow         go on with what is added, also to a log that does not exist yet or is replaced; Control-C ends it
  -n, --lines LINES    begin with the last LINES lines
)";

} // namespace

QByteArray helpText(const QString &command)
{
    if (command == QStringLiteral("post"))
        return post + commandList();
    if (command == QStringLiteral("state"))
        return state;
    if (command == QStringLiteral("settings"))
        return settings;
    if (command == QStringLiteral("log"))
        return log;
    return overall;
}

QByteArray commandList()
{
    QByteArray text;
    for (const auto &command : commandTable)
        text += QByteArray(command.text).leftJustified(18) + command.meaning + '\n';
    return text;
}

} // namespace quillnest::ctl

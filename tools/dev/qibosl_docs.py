#!/usr/bin/env python3
"""Generates qibosl's manual page and bash completion from its usage catalog source.

qibosl_docs.py CATALOG.msg MAN.in CHANGELOG DATADIR OUTDIR VERSION

The catalog (tools/qibosl/qibosl.msg) holds one entry per command, NAME_x4_1=SYNOPSIS  DESCRIPTION,
further lines written "\\n\\t". From it come the COMMANDS section of qibosl.1 (one subsection per
command, in catalog order) and the command, verb and option lists of the completion, so that
neither can drift from what `qibosl help` prints. The page's date is the newest changelog entry's.
"""
import email.utils
import gzip
import re
import sys
import textwrap
from pathlib import Path

ENTRY = re.compile(r'^([A-Za-z0-9-]+)_x4_1=(.*)$')


def unescape(text):
    """The catalog's escapes, as `qibosl catalog compile` reads them."""
    out, i = [], 0
    while i < len(text):
        c = text[i]
        if c == '\\' and i + 1 < len(text):
            n = text[i + 1]
            if n == 'x' and i + 3 < len(text) + 1:
                out.append(chr(int(text[i + 2:i + 4], 16)))
                i += 4
                continue
            out.append({'n': '\n', 't': '\t', '\\': '\\'}.get(n, n))
            i += 2
            continue
        out.append(c)
        i += 1
    return ''.join(out)


def read_commands(catalog):
    """[(name, [(synopsis, description)])] in catalog order; a line without a synopsis
    continues the description of the line before it."""
    commands = []
    for raw in Path(catalog).read_text(encoding='utf-8').splitlines():
        m = ENTRY.match(raw)
        if not m:
            continue
        rows = []
        for line in unescape(m.group(2)).split('\n'):
            line = line.lstrip('\t')
            synopsis, _, description = (re.split(r'( {2,})', line, maxsplit=1) + ['', ''])[:3]
            synopsis, description = synopsis.strip(), description.strip()
            if not synopsis and rows:
                rows[-1] = (rows[-1][0], (rows[-1][1] + ' ' + description).strip())
            else:
                rows.append((synopsis, description))
        commands.append((m.group(1), rows))
    return commands


def roff_escape(text):
    return text.replace('\\', '\\e').replace('-', '\\-')


def roff_text(text):
    """A whole line of text: a leading dot or quote would read as a request."""
    text = roff_escape(text)
    return '\\&' + text if text[:1] in ('.', "'") else text


TOKEN = re.compile(r"([A-Z][A-Z0-9_]*(?:\.\.\.)?)|(-?[a-z][a-z0-9_-]*=?)|(.)")


def roff_synopsis(synopsis):
    """Operands in italics, command words and options in bold, punctuation roman."""
    out = []
    for operand, word, other in TOKEN.findall(synopsis):
        if operand:
            out.append('\\fI' + roff_escape(operand) + '\\fR')
        elif word:
            out.append('\\fB' + roff_escape(word) + '\\fR')
        else:
            out.append(roff_escape(other))
    return '\\fBqibosl\\fR ' + ''.join(out)


def man_commands(commands):
    lines = []
    for name, rows in commands:
        lines.append('.SS ' + name)
        for synopsis, description in rows:
            lines += ['.TP', roff_synopsis(synopsis)]
            lines += [roff_text(part) for part in textwrap.wrap(description, 72)] or ['.']
    return '\n'.join(lines)


def changelog_date(changelog):
    for line in Path(changelog).read_text(encoding='utf-8').splitlines():
        if line.startswith(' -- '):
            return email.utils.parsedate_to_datetime(line.split('  ', 1)[1]).strftime('%Y-%m-%d')
    raise SystemExit(f'{changelog}: no trailer line')


def completion(commands):
    cases = []
    for name, rows in commands:
        options, verbs = set(), []
        for synopsis, _ in rows:
            options.update(re.findall(r'(?<![\w=])-[a-zA-Z][a-zA-Z-]*=?', synopsis))
            words = synopsis.split()
            for i, w in enumerate(words):
                after_head = (i == 1 and words[0] == name) or (i > 0 and words[i - 1] == '|')
                if after_head and re.fullmatch(r'[a-z][a-z-]*', w) and w not in verbs:
                    verbs.append(w)
        opts = ' '.join(sorted(options) + ['-help'])
        cases.append(f'        {name}) options="{opts}"; verbs="{" ".join(verbs)}" ;;')
    names = ' '.join(n for n, _ in commands)
    return f'''# bash completion for qibosl(1), generated from qibosl's usage catalog.
_qibosl() {{
    local cur=${{COMP_WORDS[COMP_CWORD]}} options="" verbs=""
    if [ "$COMP_CWORD" -eq 1 ]; then
        mapfile -t COMPREPLY < <(compgen -W "help {names}" -- "$cur")
        return
    fi
    case ${{COMP_WORDS[1]}} in
        help)
            [ "$COMP_CWORD" -eq 2 ] && mapfile -t COMPREPLY < <(compgen -W "{names}" -- "$cur")
            return ;;
{chr(10).join(cases)}
    esac
    if [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options" -- "$cur")
        [[ ${{#COMPREPLY[@]}} -eq 1 && ${{COMPREPLY[0]}} == *= ]] && compopt -o nospace 2>/dev/null
    elif [ "$COMP_CWORD" -eq 2 ] && [ -n "$verbs" ]; then
        mapfile -t COMPREPLY < <(compgen -W "$verbs" -- "$cur")
    else
        COMPREPLY=()
        compopt -o default 2>/dev/null
    fi
}}
complete -F _qibosl qibosl
'''


def main():
    catalog, man_in, changelog, datadir, outdir, version = sys.argv[1:7]
    # The packages take their changelog from the same file: a release without an entry fails here.
    newest = re.search(r'\(([^)-]+)', Path(changelog).read_text(encoding='utf-8')).group(1)
    if newest != version:
        raise SystemExit(f'{changelog}: newest entry is {newest}, the project is {version}')
    commands = read_commands(catalog)
    page = (Path(man_in).read_text(encoding='utf-8')
            .replace('@OSL_MAN_COMMANDS@', man_commands(commands))
            .replace('@OSL_MAN_DATE@', changelog_date(changelog))
            .replace('@OSL_MAN_DATADIR@', roff_text(datadir))
            .replace('@PROJECT_VERSION@', version))
    out = Path(outdir)
    (out / 'qibosl.1').write_text(page, encoding='utf-8')
    # Manual pages ship compressed, reproducibly: no name and no time stamp in the gzip header.
    with open(out / 'qibosl.1.gz', 'wb') as raw:
        with gzip.GzipFile(filename='', mode='wb', fileobj=raw, compresslevel=9, mtime=0) as gz:
            gz.write(page.encode('utf-8'))
    (out / 'qibosl.bash-completion').write_text(completion(commands), encoding='utf-8')


if __name__ == '__main__':
    main()

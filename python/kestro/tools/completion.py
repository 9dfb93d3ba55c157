"""Sub-command ``completion``: what makes a shell complete the command."""

from __future__ import annotations

import argparse
from collections.abc import Iterator

from kestro.tools import _writing
from kestro.tools._status import Status
from kestro.tools._terminal import Terminal

HELP = "print what makes a shell complete the command"
DESCRIPTION = "Print the script by which a shell completes kestro-tools."
EPILOG = """\
examples:
  source <(kestro-tools completion bash)
  source <(kestro-tools completion zsh)

These are for the shell they are typed in, and for each one as a line of ~/.bashrc, or
of ~/.zshrc below compinit.  Shells start faster with the script in a file:

  mkdir -p ~/.local/share/bash-completion/completions
  kestro-tools completion bash > ~/.local/share/bash-completion/completions/kestro-tools

  mkdir -p ~/.zfunc
  kestro-tools completion zsh > ~/.zfunc/_kestro-tools

The first needs the package bash-completion, the second in ~/.zshrc, above compinit, the
line fpath=(~/.zfunc $fpath).
"""
_IS_SOURCED = "zsh_eval_context[-1] == (eval|file) "
_FILES = frozenset({"INPUT", "FILE", "RESULT", "FIRST", "SECOND"})
_FOLDERS = frozenset({"FOLDER"})


def add_arguments(parser: argparse.ArgumentParser) -> None:
    """Add what this sub-command takes."""
    parser.add_argument("shell", choices=("bash", "zsh"), help="which shell")


def run(args: argparse.Namespace, terminal: Terminal) -> Status:
    """Print the script.

    Raises
    ------
    ImportError
        Without shtab, which ``pip install kestro[tools]`` brings.
    """
    try:
        import shtab
    except ImportError as e:
        raise ImportError("this needs shtab: pip install 'kestro[tools]'") from e
    from kestro.tools.__main__ import parser

    top = parser()
    _describe(top)
    for action in _actions(top):
        if action.metavar in _FILES:
            action.complete = shtab.FILE  # type: ignore[attr-defined]
        elif action.metavar in _FOLDERS:
            action.complete = shtab.DIRECTORY  # type: ignore[attr-defined]
    script: str = shtab.complete(top, args.shell)
    # So that zsh takes it from source as it does from eval.
    script = script.replace("zsh_eval_context[-1] == eval ", _IS_SOURCED)
    _writing.write_lines(_writing.STDOUT, [script.rstrip("\n") + "\n"])
    return Status.FOUND


def _describe(top: argparse.ArgumentParser) -> None:
    """Describe sub-commands by a line each, as where shells list them."""
    for action in top._actions:
        if isinstance(action, argparse._SubParsersAction):
            for told in action._choices_actions:
                action.choices[told.dest].description = told.help


def _actions(parser: argparse.ArgumentParser) -> Iterator[argparse.Action]:
    """Yield all arguments of a parser and of its sub-commands."""
    for action in parser._actions:
        if isinstance(action, argparse._SubParsersAction):
            for sub in action.choices.values():
                yield from _actions(sub)
        else:
            yield action

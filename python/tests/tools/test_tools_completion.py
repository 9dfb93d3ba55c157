"""Sub-command completion."""

import subprocess
import sys

import pytest
from kestro.tools.__main__ import main

COMMANDS = "mine suggest check convert report match diff completion".split()

# What bash does when Tab is pressed behind these words.
PRESS = """
{script}
COMP_WORDS=({words})
COMP_CWORD=$(( ${{#COMP_WORDS[@]}} - 1 ))
$(complete -p kestro-tools | sed 's/.*-F \\([^ ]*\\).*/\\1/')
printf '%s\\n' "${{COMPREPLY[@]}}"
"""


@pytest.fixture
def script(capsys):
    assert main(["completion", "bash"]) == 0
    return capsys.readouterr().out


def press(script, words):
    done = subprocess.run(
        ["bash", "-c", PRESS.format(script=script, words=words)],
        capture_output=True,
        text=True,
        check=True,
    )
    return done.stdout.split()


def test_sub_commands_are_completed(script):
    assert set(COMMANDS) <= set(press(script, "kestro-tools ''"))
    assert press(script, "kestro-tools su") == ["suggest"]


def test_options_and_choices_are_completed(script):
    assert press(script, "kestro-tools mine --max-p") == ["--max-patterns"]
    assert press(script, "kestro-tools convert --to gr") == ["graphml"]


def test_zsh(capsys):
    assert main(["completion", "zsh"]) == 0
    out = capsys.readouterr().out
    assert out.startswith("#compdef kestro-tools")
    assert all(command in out for command in COMMANDS)
    # In one line, whole; and registered where the script is sourced.
    assert "check:'tell all problems of a transaction file at once'" in out
    assert "if [[ $zsh_eval_context[-1] == (eval|file) ]]" in out


def test_without_shtab(monkeypatch, capsys):
    monkeypatch.setitem(sys.modules, "shtab", None)
    assert main(["completion", "bash"]) == 2
    assert "pip install 'kestro[tools]'" in capsys.readouterr().err


def test_every_command_has_help_with_examples(capsys):
    for command in COMMANDS:
        assert main([command, "--help"]) == 0
        assert f"  kestro-tools {command} " in capsys.readouterr().out

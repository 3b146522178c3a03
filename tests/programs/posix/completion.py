#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Types into real interactive shells and reads their screens.

usage: completion.py BIN        (the folder of moxtool and of the programs)
"""

import fcntl
import os
import select
import shutil
import subprocess
import sys
import tempfile
import termios
import time
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "..", "kit"))
import terminal

programs = os.path.abspath(sys.argv.pop(1))
starts = {
    "bash": (["bash", "--norc", "--noprofile", "-i"], "PS1='> '; source <(moxtool completion bash probe_tool moxcopy moxinfo)"),
    "zsh": (["zsh", "-f", "-i"], "PS1='> '; autoload -Uz compinit; compinit -D; setopt no_auto_menu; "
            "source <(moxtool completion zsh probe_tool moxcopy moxinfo)"),
    "fish": (["fish", "--no-config", "-i"], "function fish_prompt; echo -n '> '; end; "
             "moxtool completion fish probe_tool moxcopy moxinfo | source"),
}


class Shell:
    def __init__(self, name, folder):
        self.terminal, theirs = terminal.opened(30, 100)
        command, setup = starts[name]
        env = {"PATH": programs + ":" + os.environ["PATH"], "TERM": "xterm", "HOME": folder, "LC_ALL": "C.UTF-8"}
        self.process = subprocess.Popen(command, stdin=theirs, stdout=theirs, stderr=theirs, env=env,
                                        cwd=folder, start_new_session=True,
                                        preexec_fn=lambda: fcntl.ioctl(0, termios.TIOCSCTTY, 0))
        os.close(theirs)
        self.screen, self.stream = terminal.screen(30, 100)
        self.until(lambda text: text.strip() != "")
        self.type(setup + "; echo rea''dy\n")
        self.until(lambda text: "\nready" in text)
        self.type("clear\n")
        self.until(lambda text: text.strip() == ">")

    def text(self):
        return "\n".join(terminal.lines(self.screen))

    def type(self, keys):
        os.write(self.terminal, keys.encode())

    def until(self, condition, seconds=20):
        end = time.monotonic() + seconds
        while not condition(self.text()):
            if time.monotonic() > end:
                raise AssertionError("the screen shows:\n" + self.text().strip())
            if select.select([self.terminal], [], [], 0.1)[0]:
                self.stream.feed(os.read(self.terminal, 65536))

    def close(self):
        self.process.kill()
        self.process.wait()
        os.close(self.terminal)


class Completion(unittest.TestCase):
    def test_in_each_shell(self):
        for name in starts:
            with self.subTest(shell=name):
                if shutil.which(name) is None:
                    print(f"skipped: {name} is not installed")
                    continue
                with tempfile.TemporaryDirectory() as folder:
                    os.makedirs(folder + "/deep folder")
                    os.makedirs(folder + "/plant/brewery")
                    open(folder + "/plant/brewery/mashing.dgm", "w", encoding="utf-8").close()
                    shell = Shell(name, folder)
                    try:
                        self.complete(shell)
                    finally:
                        shell.close()

    def complete(self, shell):
        # The whole word, a name with a blank as one word, a directory of the shell's.
        for typed, completed in [("probe_tool -verb\t", "probe_tool -verbose"),
                                 ("probe_tool -system my\t", "probe_tool -system my\\ plant"),
                                 ("probe_tool -projdir dee\t", "probe_tool -projdir deep\\ folder"),
                                 ("moxcopy --p\t", "moxcopy --plan"),
                                 ("moxinfo --ori\t", "moxinfo --origin"),
                                 ("moxcopy -projdir plant -system br\t", "moxcopy -projdir plant -system brewery"),
                                 ("moxcopy -projdir plant -system brewery ma\t", "-system brewery mashing")]:
            shell.until(lambda text: text.strip() == ">") # what is typed before is echoed elsewhere
            shell.type(typed)
            shell.until(lambda text: completed in text)
            shell.type("\x15") # take the line back


class Scripts(unittest.TestCase):
    def script(self, *words):
        return subprocess.run([programs + "/moxtool", "completion", *words], capture_output=True, check=False)

    def test_shells_accept_them(self):
        for shell, check in (("bash", ["bash", "-n"]), ("zsh", ["zsh", "-n"]), ("fish", ["fish", "--no-execute"])):
            if shutil.which(shell) is None:
                continue
            with tempfile.NamedTemporaryFile() as file:
                file.write(self.script(shell).stdout)
                file.flush()
                self.assertEqual(subprocess.run([*check, file.name], check=False).returncode, 0, shell)

    def test_other_words(self):
        for words in (["tcsh"], ["bash", "a;b"], ["bash", "-x"], []):
            run = self.script(*words)
            self.assertEqual((run.returncode, run.stdout), (2, b""), words)
            self.assertIn(b"moxtool completion -help shows how it is used", run.stderr)


if __name__ == "__main__":
    unittest.main(verbosity=1)

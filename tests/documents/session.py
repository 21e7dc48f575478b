"""Runs the commands of a block in a folder of their own and compares what they print."""

import os
import re
import shlex
import shutil
import signal
import subprocess
import tempfile
import time
import urllib.error
import urllib.request

from marks import DEVICES, MARKS, SHORTENED, VARYING

SECONDS_TO_END = 120
SECONDS_OF_ENDLESS = 1
ANY_LINES = "..."
STAYS = "stays until the end of this page"


STATION_PAGE = "http://127.0.0.1:8480/"  # in the documents; here a station has any free port


def is_service(command):
    """Whether the command runs until somebody ends it."""
    words = command.split()
    return words[0] == "kakb-sim" or (words[0] == "kakb-station" and "--check" not in words
                                      and "--help" not in words)


class Failure(Exception):
    """One sentence about what is wrong in a document."""


def pattern_of(line):
    """A regular expression for a line of a document; what varies is free, the rest is not."""
    pattern = ""
    at = 0
    for varying in re.finditer("|".join(f"(?:{v})" for v in VARYING), line):
        part = next(v for v in VARYING if re.compile(v).match(line, varying.start()))
        pattern += re.escape(line[at:varying.start()]) + part
        at = varying.end()
    return pattern + re.escape(line[at:])


def same(expected, printed):
    """Whether the printed lines are those of the document, where "..." stands for any lines."""
    if not expected:
        return not printed
    if expected[0].strip() == ANY_LINES:
        return any(same(expected[1:], printed[n:]) for n in range(len(printed) + 1))
    if not printed or not re.fullmatch(pattern_of(expected[0].strip()), printed[0].strip()):
        return False
    return same(expected[1:], printed[1:])


class Session:
    """A folder with the project's files and the demo's tags in it, and what runs there."""

    def __init__(self, folder, source, build, programs):
        self.folder = folder
        self.source = source
        self.build = build
        self.environment = dict(os.environ, LC_ALL="C.UTF-8")
        self.environment["PATH"] = os.pathsep.join([*map(str, programs), os.environ["PATH"]])
        self.environment.pop("KAKB_DRIVER", None)
        self.page = STATION_PAGE  # of the station that was started last
        self.running = []
        self.staying = []
        self.last_status = 0
        self._furnish()

    def _furnish(self):
        for entry in self.source.iterdir():
            if entry.name not in ("build", ".git", "demo"):
                (self.folder / entry.name).symlink_to(entry)
        shutil.copytree(self.source / "demo", self.folder / "demo")
        for table in ("tags.csv", "recipe.csv"):
            shutil.copy(self.source / "demo" / table, self.folder / table)
        (self.folder / "build").mkdir()
        (self.folder / "build" / "qt5").symlink_to(self.build)

    def run(self, command, expected):
        """`expected` is what the document shows after the command; None: only the status counts."""
        if command in MARKS:
            return self._check_marked(command)
        command = self._here(command)
        if is_service(command):
            printed = self._serve(command)
        else:
            printed = self._printed(command)
        if expected is not None and not same(expected, printed):
            raise Failure("\n".join([f"{command} prints", *printed, "and not", *expected]))
        print("ran", command)
        return None

    def _here(self, command):
        """The command with this machine's devices and this folder's files."""
        command = command.replace("/tmp/", f"{self.folder}/")
        if is_service(command) and command.startswith("kakb-station"):
            command += " --listen 127.0.0.1:0"
        command = command.replace(STATION_PAGE, self.page)
        for device, (why, line) in DEVICES.items():
            if device in command:
                print(f"marked {device}: {why}, here a simulated one on {line}")
                command = command.replace(device, self._device(line))
        return command

    def _device(self, line):
        if line == "tcp":
            return self._serve("kakb-sim --stations 1-2 --tcp 0")[0]
        # "device" is a folder of the project.
        link = self.folder / f"serial-device-{len(self.running) + len(self.staying)}"
        self._serve(f"kakb-sim --stations 1-2 --link-path {link}")
        return f"serial:{link}"

    def _serve(self, command):
        """Starts a simulated PLC, which stays until end()."""
        process = subprocess.Popen(
            ["bash", "-c", f"exec {command}"], cwd=self.folder,
            # A station has its state folder for itself.
            env={**self.environment, "XDG_STATE_HOME": str(self.folder / f"state{len(self.running)}")},
            stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, text=True)
        self.running.append((command, process))
        line = process.stdout.readline()
        if not line:
            raise Failure(f"{command} ends with status {process.wait()}")
        if line.startswith("http://"):
            self.page = line.strip()
            self._await_values()
            line = STATION_PAGE
        return [line.rstrip("\n")]

    def _await_values(self):
        """A reader types more slowly than a station reads its first values."""
        deadline = time.monotonic() + SECONDS_TO_END
        while time.monotonic() < deadline:
            try:
                with urllib.request.urlopen(self.page + "api/v1/values") as answer:
                    if b'"value":null' not in answer.read():
                        return
            except urllib.error.URLError:
                pass
            time.sleep(0.05)

    def _printed(self, command):
        words = shlex.split(command, comments=True)
        endless = (words[:2] == ["kakb-host", "watch"] and "--seconds" not in words
                   or words[:2] == ["curl", "-sN"])
        script = f"(exit {self.last_status}); {command}"
        with tempfile.TemporaryFile("w+", encoding="utf-8") as output:
            process = subprocess.Popen(
                ["bash", "-c", script], cwd=self.folder, env=self.environment,
                stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT,
                start_new_session=True)
            if endless:
                self._interrupt(process, output)
            try:
                self.last_status = process.wait(timeout=SECONDS_TO_END)
            except subprocess.TimeoutExpired:
                os.killpg(process.pid, signal.SIGKILL)
                raise Failure(f"{command} does not end") from None
            if endless and self.last_status == -signal.SIGINT:
                self.last_status = 0  # Ctrl-C is how such a command ends
            output.seek(0)
            return output.read().splitlines()

    @staticmethod
    def _interrupt(process, output):
        """As a user would who has seen something."""
        deadline = time.monotonic() + SECONDS_TO_END
        while os.fstat(output.fileno()).st_size == 0 and time.monotonic() < deadline:
            time.sleep(0.05)
        time.sleep(SECONDS_OF_ENDLESS)
        os.killpg(process.pid, signal.SIGINT)

    def _check_marked(self, command):
        why, check = MARKS[command]
        getattr(self, f"_check_{check}")(command)
        print(f"marked {command}: {why}; checked as {check}")

    def _check_script(self, command):
        script = self.source / command.split()[0]
        if not os.access(script, os.X_OK):
            raise Failure(f"{script} is no program")
        subprocess.run(["bash", "-n", script], check=True)

    def _check_preset(self, command):
        words = shlex.split(command)
        kind = "test" if words[0] == "ctest" else "build" if "--build" in words else "configure"
        listed = subprocess.run(
            ["cmake", f"--list-presets={kind}"], cwd=self.source, check=True, text=True,
            stdout=subprocess.PIPE).stdout
        if f'"{words[-1]}"' not in listed:
            raise Failure(f"there is no {kind} preset {words[-1]}")

    def _check_hook(self, command):
        folder = self.source / command.split()[-1]
        hooks = {"pre-commit", "commit-msg", "pre-push", "prepare-commit-msg", "post-commit",
                 "post-checkout", "post-merge", "pre-rebase", "applypatch-msg"}
        found = {entry.name for entry in folder.iterdir()} & hooks
        if found != {"pre-commit"} or not os.access(folder / "pre-commit", os.X_OK):
            raise Failure(f"{folder} has {found or 'no hook'}")

    def _check_shortened(self, command):
        if not (self.source / "tests" / "soak").is_dir():
            raise Failure("there is no soak")
        program = SHORTENED[command].format(build=self.build)
        if (self.build / "tests" / "soak" / "soak").exists():
            self._printed(program)
            self.ended_well(program)

    def ended_well(self, command):
        """Unless the document asks for the status, it must be 0."""
        if self.last_status:
            raise Failure(f"{command} ends with status {self.last_status}")

    def end(self):
        """Ends what was started since keep(); a simulated PLC ends well."""
        ended, self.running = self.running, []
        for _, process in ended:
            process.terminate()
        for command, process in ended:
            process.stdout.close()
            if process.wait(timeout=SECONDS_TO_END):
                raise Failure(f"{command} ends with status {process.returncode}")

    def keep(self):
        """What is running goes on until end_all()."""
        self.staying += self.running
        self.running = []

    def end_all(self):
        """Ends what stayed, too."""
        self.running += self.staying
        self.staying = []
        self.end()


def commands_in(block):
    """(command, what it prints) of a block; a block without prompts shows no output."""
    if not block.lines[0].startswith("$ "):
        joined = block.text.replace("\\\n", " ")
        return [(line.strip(), None) for line in joined.splitlines() if line.strip()]
    found = []
    for line in block.lines:
        if line.startswith("$ "):
            found.append((line[2:], []))
        elif found[-1][0].endswith("\\"):
            found[-1] = (found[-1][0][:-1] + line.strip(), [])
        elif line:
            found[-1][1].append(line)
    # A command that the document shows nothing of may print what it likes.
    return [(command, expected or None) for command, expected in found]


def without_comment(command):
    """The command without the remark behind it, as marks name it."""
    return re.sub(r"\s+# .*$", "", command)


def run_block(block, session):
    """Runs a block of commands. What it starts ends with it, unless its marker says otherwise."""
    commands = commands_in(block)
    try:
        for number, (command, expected) in enumerate(commands):
            session.last_status = session.last_status if command == "echo $?" else 0
            session.run(without_comment(command), expected)
            asked = number + 1 < len(commands) and commands[number + 1][0] == "echo $?"
            if not asked:
                session.ended_well(command)
    finally:
        if block.marker == STAYS:
            session.keep()
        session.end()

"""Runs commands of a build and the tests of a mutant, the latter within limits."""

import os
import resource
import shlex
import signal
import subprocess

MEMORY_MIB = 3072  # a mutant that grows a list for ever must not take the machine along
SLOW_TEST_SECONDS = 0.02


class BuildError(Exception):
    pass


def run(command, folder):
    done = subprocess.run(command, cwd=folder, capture_output=True, text=True)
    if done.returncode != 0:
        raise BuildError(f"{shlex.join(map(str, command))}\n{done.stdout}{done.stderr}")
    return done.stdout


def succeeds(command, folder):
    done = subprocess.run(
        command, cwd=folder, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL
    )
    return done.returncode == 0


def compilation_of(entry):
    """Of compile_commands.json, without a compiler cache: a mutant is compiled once."""
    command = shlex.split(entry["command"])
    return command[1:] if os.path.basename(command[0]) == "ccache" else command


def with_output(command, output):
    place = command.index("-o") + 1
    return command[:place] + [output] + command[place + 1 :]


def slow_tests(report):
    """Of a report that gtest wrote as JSON."""
    return [
        f"{suite['name']}.{test['name']}"
        for suite in report["testsuites"]
        for test in suite["testsuite"]
        if float(test["time"].rstrip("s")) > SLOW_TEST_SECONDS
    ]


def judge_tests(program, choice, folder, processor_seconds, clock_seconds, sanitizer_options=None):
    """Runs the chosen tests: (status, what noticed it); status is killed, survived or timed out.

    The processor's time is what counts; the clock's ends a mutant that waits for ever.
    """
    command = [program, "--gtest_brief=1", "--gtest_fail_fast", f"--gtest_filter={choice}"]
    sanitized = sanitizer_options is not None
    environment = {**os.environ, "ASAN_OPTIONS": sanitizer_options} if sanitized else None
    try:
        done = subprocess.run(
            command, cwd=folder, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL, timeout=clock_seconds, env=environment,
            preexec_fn=lambda: limit_resources(processor_seconds, sanitized),
        )
    except subprocess.TimeoutExpired:
        return "timed out", ""
    if done.returncode == 0:
        return "survived", ""
    if done.returncode in (-signal.SIGXCPU, -signal.SIGKILL):
        return "timed out", ""
    return "killed", first_failure(done.stdout.decode(errors="replace"), done.returncode)


def limit_resources(seconds, sanitized):
    resource.setrlimit(resource.RLIMIT_CPU, (seconds, seconds + 1))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))
    if not sanitized:  # which map far more than they use
        resource.setrlimit(resource.RLIMIT_AS, (MEMORY_MIB << 20, MEMORY_MIB << 20))


def first_failure(output, status):
    for line in output.splitlines():
        if line.startswith("[  FAILED  ]"):
            return line.split()[3].rstrip(",")
    return f"signal {-status}" if status < 0 else f"exit status {status}"

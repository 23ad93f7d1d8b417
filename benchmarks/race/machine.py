"""The machine of a run, in the words of its own files."""
import contextlib
import os
import pathlib
import platform
import subprocess


def first_field(path, name):
    with contextlib.suppress(OSError):
        for line in pathlib.Path(path).read_text().splitlines():
            key, _, value = line.partition(":")
            if key.strip() == name:
                return value.strip()
    return ""


def system():
    with contextlib.suppress(OSError):
        for line in pathlib.Path("/etc/os-release").read_text().splitlines():
            if line.startswith("PRETTY_NAME="):
                return line.split("=", 1)[1].strip('"')
    return platform.system()


def compiler(build):
    for line in (build / "CMakeCache.txt").read_text().splitlines():
        if line.startswith("CMAKE_CXX_COMPILER:"):
            told = subprocess.run([line.split("=", 1)[1], "--version"], capture_output=True, text=True)
            return told.stdout.splitlines()[0] if told.stdout else ""
    return ""


def describe(build):
    memory = first_field("/proc/meminfo", "MemTotal").split()
    return {
        "processor": first_field("/proc/cpuinfo", "model name") or platform.machine(),
        "cores": os.cpu_count(),
        "virtual": "hypervisor" in first_field("/proc/cpuinfo", "flags").split(),
        "memory_gib": round(int(memory[0]) / 1024**2) if memory else None,
        "system": system(),
        "kernel": platform.release(),
        "compiler": compiler(build),
    }


def sentence(machine):
    kind = "virtual " if machine["virtual"] else ""
    return (
        f"{machine['processor']}, {machine['cores']} {kind}cores, {machine['memory_gib']} GiB; "
        f"{machine['system']}, Linux {machine['kernel']}; {machine['compiler']}"
    )

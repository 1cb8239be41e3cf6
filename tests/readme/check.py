#!/usr/bin/env python3
"""check.py SOURCE BUILD: runs each command in README.md as it stands there, in a home of its own
and with a simulated device. What builds or installs for minutes is looked up instead among the jobs,
packages and presets that there are. A command without a row below is a failure."""
import os, pathlib, re, signal, subprocess, sys, tempfile

source, build = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
temporary = tempfile.TemporaryDirectory()
work = pathlib.Path(temporary.name)
programs, devices, firmware = work / 'build/bin', work / 'devices', work / 'VornUpdate2'
environment = os.environ | {name: str(work) for name in
                            ('HOME', 'TMPDIR', 'XDG_CACHE_HOME', 'XDG_CONFIG_HOME')}
environment |= {'PATH': f'{programs}:{os.environ["PATH"]}', 'LC_ALL': 'C.UTF-8'}


def start(*command):
    return subprocess.Popen(('timeout', '--foreground', '30', *command), env=environment, cwd=work,
                            text=True, stdout=subprocess.PIPE)


def has(file, text):
    return text in (source / file).read_text()


def runs(text, endless=False):
    """Runs the command, has an endless one end once it has printed the text, and looks for both."""
    def check(command):
        replay = source / 'tests/simulator/transcripts/refused-in-the-data.txt'
        with start('bash', '-c', command.replace('FILE', str(replay))) as process:
            found = any(text in line for line in process.stdout)
            if endless:
                process.send_signal(signal.SIGINT)
        return found and process.returncode == 0
    return check


def has_options(command):
    return all(re.search(rf'{option}[] ,]', helps) for option in re.findall('--[a-z-]+', command))


programs.mkdir(parents=True)
devices.mkdir()
for name in 'vornsim', 'vornupdater':
    (programs / name).symlink_to(build / 'bin' / name)
# The README's commands find real devices; here these take their place.
(programs / 'vornupdater-cli').write_text(
    f'#!/bin/sh\nexec {build}/bin/vornupdater-cli --device-dir {devices} "$@"\n')
(programs / 'vornupdater-cli').chmod(0o755)
start('vornsim', 'sample-firmware', firmware).wait()
device = start('vornsim', 'device', '--dir', devices, '--name', 'usbserial-1', '--image', 'image')
device.stdout.readline()
jobs = start(source / 'run', 'help').communicate()[0]
helps = jobs + start('vornupdater', '--help').communicate()[0]

rows = [
    (r'--.*|\./run app .*', has_options),
    (r'\./run (\w+)( .*)?', lambda command, job, _: has('run', f'\n{job})\n') and
     re.search(re.escape(command) + r'[\s,]', jobs)),
    (r'sudo apt (?:purge |install \./build/packages/)(\w+)(?:_\*\.deb)?', lambda _, name:
     has('packaging/Packages.cmake', f'_PACKAGE_NAME {name})')),
    (r'cmake --preset (\w+) -D(\w+)=HOST', lambda _, name, variable:
     has('CMakePresets.json', f'"name": "{name}"') and has('CMakeLists.txt', f'set({variable} ')),
    (r'build/bin/vornupdater-cli list', runs('usbserial-1  ')),
    (r'build/bin/vornupdater-cli update --newest', runs('Updated with VORN_PLATINA-3.1.2.bin')),
    (r'build/bin/vornupdater-cli watch --newest --record station.jsonl', runs('Updated', True)),
    (r'vornsim device --replay FILE', runs('"ready"', True)),
]
readme = (source / 'README.md').read_text()
spans = [' '.join(span.split()) for span in re.findall('`([^`]+)`', readme)]
failures = []
for command in re.findall(r'^    (\S.*)', readme, re.M) + spans:
    row = next((row for row in rows if re.fullmatch(row[0], command)), None)
    if row and not row[1](command, *re.fullmatch(row[0], command).groups()):
        failures.append(f'This does not work: {command}')
    elif not row and ' ' in command:
        failures.append(f'No row is for: {command}')

device.send_signal(signal.SIGINT)
device.wait()
if not failures:
    if (work / 'image').read_bytes() != (firmware / 'VORN_PLATINA-3.1.2.bin').read_bytes():
        failures.append('The device holds another image.')
    if (work / 'station.jsonl').read_text().count('"result":"ok"') != 1:
        failures.append('The station kept no record.')
sys.exit('\n'.join(failures) or 0)

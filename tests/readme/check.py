#!/usr/bin/env python3
"""check.py SOURCE BUILD: runs each command in README.md in a home of its own, with a simulated
device in place of the system's. What builds or installs for minutes is looked up instead among the
jobs, packages and presets that there are. A command without a row below is a failure."""
import os, pathlib, re, signal, subprocess, sys, tempfile

source, build = (pathlib.Path(argument).resolve() for argument in sys.argv[1:])
temporary = tempfile.TemporaryDirectory()
work = pathlib.Path(temporary.name)
homes = ('HOME', 'TMPDIR', 'XDG_CACHE_HOME', 'XDG_CONFIG_HOME')
environment = os.environ | {name: str(work) for name in homes} | {'LC_ALL': 'C.UTF-8'}
replay = source / 'tests/simulator/transcripts/refused-in-the-data.txt'


def start(command):
    command = re.sub('^(?:build/bin/)?vorn', f'{build}/bin/vorn', command)
    command = command.replace('-cli ', '-cli --device-dir . ').replace('FILE', str(replay))
    return subprocess.Popen('exec timeout --foreground 30 ' + command, env=environment, cwd=work,
                            shell=True, text=True, stdout=subprocess.PIPE)


def runs(text, endless=False):
    """Runs the command, has an endless one end once it has printed the text, and looks for both."""
    def check(command):
        with start(command) as process:
            found = any(text in line for line in process.stdout)
            if endless:
                process.send_signal(signal.SIGINT)
        return found and process.returncode == 0
    return check


def has(file, text):
    return text in (source / file).read_text()


def has_options(command):
    return all(re.search(f'{option}[] ,]', helps) for option in re.findall('--[a-z-]+', command))


start('vornsim sample-firmware VornUpdate2').wait()
device = start('vornsim device --dir . --name usbserial-1 --image image')
device.stdout.readline()
helps = start(f'{source}/run help').communicate()[0] + start('vornupdater --help').communicate()[0]
rows = [
    (r'--.*|\./run app .*', has_options),
    (r'\./run (\w+)( .*)?', lambda command, job, _: has('run', f'\n{job})\n') and
     re.search(re.escape(command) + r'[\s,]', helps)),
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
newest = (work / 'VornUpdate2/VORN_PLATINA-3.1.2.bin').read_bytes()
if not failures and ((work / 'image').read_bytes() != newest or
                     '"result":"ok"' not in (work / 'station.jsonl').read_text()):
    failures.append('The device holds another image, or the station kept no record.')
sys.exit('\n'.join(failures) or 0)

"""Hostile package servers and proxies, and a network file system that hangs."""
import contextlib, ctypes, os, socket, ssl, struct, subprocess, threading, time

HELLO = bytes([22, 3, 3, 0x40, 0, 2, 0, 0x3f, 0xfc])  # half of a TLS server's first record
OK = b'HTTP/1.1 200 OK\r\n'
CHUNKED = OK + b'Transfer-Encoding: chunked\r\n\r\n'
SIZED = OK + b'Content-Length: %d\r\n\r\n'


def pour(piece, prefix=b'', pause=0.0):
    """Sends the prefix, then the piece for ever."""
    def behave(stream, _):
        stream.sendall(prefix)
        while True:
            stream.sendall(piece)
            time.sleep(pause)
    return behave


def drip(text):
    """Sends the text, a byte a second."""
    def behave(stream, _):
        for byte in text:
            stream.sendall(bytes([byte]))
            time.sleep(1)
    return behave


def send(text, then=0):
    def behave(stream, _):
        stream.sendall(text)
        time.sleep(then)
    return behave


def redirect(place):
    def behave(stream, server):
        target = place.replace('*', str(server.requests)).replace('SELF', 'https://' + server.address)
        stream.sendall(f'HTTP/1.1 302 Found\r\nContent-Length: 0\r\nLocation: {target}\r\n\r\n'.encode())
        return 'next'
    return behave


class Server:
    """Behaves so once it has read a request, over TLS or plainly."""

    def __init__(self, folder, behave, plain=False):
        self.authority = folder + '/server.pem'
        subprocess.run(['openssl', 'req', '-x509', '-newkey', 'rsa:2048', '-nodes', '-days', '2', '-subj',
                        '/CN=127.0.0.1', '-addext', 'subjectAltName=IP:127.0.0.1', '-keyout',
                        self.authority + '.key', '-out', self.authority], check=True, capture_output=True)
        self.context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        self.context.load_cert_chain(self.authority, self.authority + '.key')
        self.behave, self.plain, self.requests = behave, plain, 0
        self.listener = socket.create_server(('127.0.0.1', 0))
        self.address = '127.0.0.1:%d' % self.listener.getsockname()[1]
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        with contextlib.suppress(OSError):
            while True:
                threading.Thread(target=self.serve, args=self.listener.accept()[:1], daemon=True).start()

    def serve(self, stream):
        with contextlib.suppress(OSError), stream:
            with contextlib.nullcontext(stream) if self.plain else \
                    self.context.wrap_socket(stream, server_side=True) as line:
                while line.recv(65536):
                    self.requests += 1
                    if self.behave(line, self) != 'next':
                        return


class HungFileSystem:
    """A folder mounted by FUSE, which needs root, that never answers for what the program keeps there nor
    lists itself. A thread that is told to end is let go, as a network file system does."""
    INIT, LOOKUP, FORGET, GETATTR, INTERRUPT = 26, 1, 2, 3, 36

    def __init__(self, path):
        self.path, self.device = path, os.open('/dev/fuse', os.O_RDWR)
        self.asked = threading.Event()  # something hangs
        options = f'fd={self.device},rootmode=40000,user_id=0,group_id=0,allow_other'.encode()
        self.libc = ctypes.CDLL(None, use_errno=True)
        if self.libc.mount(b'hung', path.encode(), b'fuse', 0, options) != 0:
            raise OSError(ctypes.get_errno(), 'mount')
        threading.Thread(target=self.serve, daemon=True).start()

    def serve(self):
        with contextlib.suppress(OSError):
            while True:
                request = os.read(self.device, 1 << 20)
                operation, number = struct.unpack_from('<IQ', request, 4)
                ours = request[40:].startswith((b'VornUpdate2', b'.VornUpdate2'))
                if operation == self.INIT:
                    self.reply(number, struct.pack('<IIIIHHI', 7, 31, 65536, 0, 12, 10, 65536) + bytes(40))
                elif operation == self.GETATTR:  # of a folder
                    self.reply(number, struct.pack('<4Q', 1, 0, 1, 0) + bytes(44) +
                               struct.pack('<7I', 0o40777, 2, 0, 0, 0, 4096, 0))
                elif operation == self.INTERRUPT:
                    with contextlib.suppress(FileNotFoundError):  # answered meanwhile
                        self.reply(struct.unpack_from('<Q', request, 40)[0], error=-4)
                elif operation == self.LOOKUP and ours:
                    self.asked.set()
                elif operation == self.LOOKUP:
                    self.reply(number, error=-2)

    def reply(self, number, data=b'', error=0):
        os.write(self.device, struct.pack('<IiQ', 16 + len(data), error, number) + data)

    def detach(self):
        """Gives the folder back; what hangs already goes on to."""
        self.libc.umount2(self.path.encode(), 2)

    def close(self):
        self.detach()
        os.close(self.device)

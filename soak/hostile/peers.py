"""Hostile peers: package servers, a proxy, and a network file system that hangs."""
import contextlib, ctypes, os, socket, ssl, struct, subprocess, threading, time


def certificate(folder):
    """A certificate for 127.0.0.1 that signs itself."""
    path = folder + '/server.pem'
    subprocess.run(['openssl', 'req', '-x509', '-newkey', 'rsa:2048', '-nodes', '-days', '2', '-subj',
                    '/CN=127.0.0.1', '-addext', 'subjectAltName=IP:127.0.0.1,DNS:localhost', '-keyout', path,
                    '-out', path + '.crt'], check=True, capture_output=True)
    with open(path, 'ab') as file, open(path + '.crt', 'rb') as more:
        file.write(more.read())
    return path


class Server:
    """Serves each connection by behave(stream, request, server), over TLS unless it is plain."""

    def __init__(self, folder, behave, plain=False):
        self.authority = certificate(folder) + '.crt'
        self.context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        self.context.load_cert_chain(folder + '/server.pem')
        self.behave, self.plain, self.requests, self.sent = behave, plain, 0, 0
        self.listener = socket.create_server(('127.0.0.1', 0))
        self.address = '127.0.0.1:%d' % self.listener.getsockname()[1]
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        with contextlib.suppress(OSError):
            while True:
                threading.Thread(target=self.serve, args=self.listener.accept()[:1], daemon=True).start()

    def serve(self, stream):
        with contextlib.suppress(OSError), stream:
            if self.plain:
                return self.behave(stream, b'', self)
            with self.context.wrap_socket(stream, server_side=True) as secure:
                while request := secure.recv(65536):
                    self.requests += 1
                    if self.behave(secure, request, self) is None:
                        return

    def pour(self, stream, piece):
        """Sends the piece for ever."""
        while True:
            stream.sendall(piece)
            self.sent += len(piece)

    def close(self):
        self.listener.close()


def answer(stream, body=b'', length=None, headers='', status='200 OK'):
    size = '' if length is None else f'Content-Length: {length}\r\n'
    stream.sendall(f'HTTP/1.1 {status}\r\n{size}{headers}\r\n'.encode() + body)


def drip(stream, _, server):
    """The body, a byte a second."""
    answer(stream, length=100_000)
    while True:
        stream.sendall(b'P')
        time.sleep(1)


def drip_header(stream, _, server):
    for byte in b'HTTP/1.1 200 OK\r\nContent-Length: 5\r\n\r\n':
        stream.sendall(bytes([byte]))
        time.sleep(1)


def endless_headers(stream, _, server):
    stream.sendall(b'HTTP/1.1 200 OK\r\n')
    server.pour(stream, b''.join(b'X-Header-%d: value\r\n' % i for i in range(1000)))


def endless_header_line(stream, _, server):
    stream.sendall(b'HTTP/1.1 200 OK\r\nX-Long: ')
    server.pour(stream, b'x' * 65536)


def endless_status(stream, _, server):
    stream.sendall(b'HTTP/1.1 200 ')
    server.pour(stream, b'x' * 65536)


def endless_body(stream, _, server):
    answer(stream)
    server.pour(stream, bytes(65536))


def endless_chunk_size(stream, _, server):
    answer(stream, headers='Transfer-Encoding: chunked\r\n')
    server.pour(stream, b'0' * 65536)


def endless_chunk_extension(stream, _, server):
    answer(stream, b'5;x=', headers='Transfer-Encoding: chunked\r\n')
    server.pour(stream, b'x' * 65536)


def endless_trailer(stream, _, server):
    answer(stream, b'3\r\nabc\r\n0\r\n', headers='Transfer-Encoding: chunked\r\n')
    server.pour(stream, b'X: y\r\n' * 10000)


def endless_continue(stream, _, server):
    server.pour(stream, b'HTTP/1.1 100 Continue\r\n\r\n' * 1000)


def short_length(stream, _, server):
    answer(stream, b'x' * 1000, length=10)


def long_length(stream, _, server):
    answer(stream, b'x' * 1000, length=100_000)


def huge_length(stream, _, server):
    answer(stream, b'x' * 1000, length=10**18)


def redirects_to(place):
    def redirect(stream, request, server):
        target = place.replace('*', str(server.requests)).replace('SELF', 'https://' + server.address)
        answer(stream, length=0, headers=f'Location: {target}\r\n', status='302 Found')
        return True

    return redirect


def silent(stream, _, server):
    time.sleep(3600)


def half_handshake(stream, _, server):
    """A TLS server's first record, half of it."""
    stream.recv(65536)
    stream.sendall(bytes([22, 3, 3, 0x40, 0, 2, 0, 0x3f, 0xfc]))
    time.sleep(3600)


def endless_handshake(stream, _, server):
    stream.recv(65536)
    record = bytes([22, 3, 3, 0x40, 0]) + bytes([2, 0xff, 0xff, 0xff]) + bytes(0x3ffc)
    server.pour(stream, record)


def closes(stream, _, server):
    stream.recv(65536)


def closes_tunnel(stream, _, server):
    stream.recv(65536)
    stream.sendall(b'HTTP/1.1 200 Connection established\r\n\r\n')


def endless_proxy(stream, _, server):
    stream.recv(65536)
    stream.sendall(b'HTTP/1.1 200 OK\r\nX: ')
    server.pour(stream, b'x' * 65536)


class HungFileSystem:
    """A mounted folder (by FUSE; needs root) whose entry "VornUpdate2" is never answered for, nor its
    listing."""
    INIT, LOOKUP, FORGET, GETATTR, INTERRUPT = 26, 1, 2, 3, 36

    def __init__(self, path):
        os.makedirs(path, exist_ok=True)
        self.path, self.asked = path, 0
        self.device = os.open('/dev/fuse', os.O_RDWR)
        options = f'fd={self.device},rootmode=40000,user_id=0,group_id=0,allow_other'.encode()
        self.libc = ctypes.CDLL(None, use_errno=True)
        if self.libc.mount(b'hung', path.encode(), b'fuse', 0, options) != 0:
            raise OSError(ctypes.get_errno(), 'mount')
        threading.Thread(target=self.serve, daemon=True).start()

    def serve(self):
        with contextlib.suppress(OSError):
            while True:
                request = os.read(self.device, 1 << 20)
                opcode, unique = struct.unpack_from('<IQ', request, 4)
                name = request[40:].split(b'\0')[0]
                if opcode == self.INIT:
                    self.reply(unique, struct.pack('<IIIIHHIIHHI', 7, 31, 65536, 0, 12, 10, 65536, 1, 0, 0, 0) + bytes(28))
                elif opcode == self.GETATTR:
                    times = struct.pack('<QQQIII', 0, 0, 0, 0, 0, 0)
                    self.reply(unique, struct.pack('<QII', 1, 0, 0) + struct.pack('<QQQ', 1, 0, 0) + times +
                               struct.pack('<IIIIIII', 0o40777, 2, 0, 0, 0, 4096, 0)[:28])
                elif opcode == self.LOOKUP and not name.startswith((b'VornUpdate2', b'.VornUpdate2')):
                    self.reply(unique, error=-2)
                elif opcode == self.INTERRUPT:
                    # The thread is to end; else FUSE, unlike NFS, would keep its process for ever.
                    self.reply(struct.unpack_from('<Q', request, 40)[0], error=-4)
                elif opcode != self.FORGET:
                    self.asked += 1

    def reply(self, unique, data=b'', error=0):
        os.write(self.device, struct.pack('<IiQ', 16 + len(data), error, unique) + data)

    def close(self):
        self.libc.umount2(self.path.encode(), 2)
        os.close(self.device)

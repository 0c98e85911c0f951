#!/usr/bin/python3
"""One fault at one step of an update, each pair a run of its own: how it ends, what is left of the installation, and
whether the next run, without the fault, makes up for it. usage: fault_bed.py BUILD [SWEEP]
Ends: error = connection error, none = no updates found, retry = Retry is offered, updated, closed = at once.
"!" behind an end: the next run does not make up for it. "-": the step has no such operation.
SWEEP: how many places of each file operation are tried besides the table, spread over the run (4 unless told)."""
import contextlib
import errno
import socket
import sys
import threading

from wizard_runs import Sample

HEAD = b"HTTP/1.1 200 OK\r\nContent-Length: %d\r\n\r\n"
STATUS = b"HTTP/1.1 %d No\r\nContent-Length: 2\r\n\r\nno"
STALL = object()
# What the server answers in place of the file, piece by piece (None hangs up, STALL keeps silent); and the expected ends
# at the requests, the three archives alike.
ANSWERS = {
    "hangs up": (lambda body: [None], "error updated updated retry"),
    "401": (lambda body: [STATUS % 401], "error updated updated retry"),
    "404": (lambda body: [STATUS % 404], "error updated updated retry"),
    "500": (lambda body: [STATUS % 500], "error updated updated retry"),
    "empty": (lambda body: [HEAD % 0], "none closed none retry"),
    "no length": (lambda body: [b"HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + body, None],
                  "updated updated updated retry"),
    "half, cut off": (lambda body: [HEAD % len(body) + body[:len(body) // 2], None], "none closed none retry"),
    "half, as if whole": (lambda body: [HEAD % (len(body) // 2) + body[:len(body) // 2]], "none closed none updated!"),
    "half, then silence": (lambda body: [HEAD % len(body) + body[:len(body) // 2], STALL], "none closed none retry"),
    "silence": (lambda body: [STALL], "error updated updated retry"),
    "another file": (lambda body: [HEAD % 9000 + b"<html>" * 1500], "none closed none updated!"),
    "moved in a circle": (lambda body: [b"HTTP/1.1 302 Found\r\nLocation: ?\r\nContent-Length: 0\r\n\r\n"],
                          "error updated updated retry"),
}
REQUESTS = ("Update.mdb", "KlnUpdt.txt", "SP2.mdb", "TESSARYDOTTEXE.zip", "TTL74DOTTPART.zip", "OPAMPDOTTSPC.zip")
# Operation and error of the fault, and the expected ends at the files.
FAULTS = {
    "create, no room": ("create", errno.ENOSPC, "error retry updated! - retry! retry updated - updated"),
    "write, no room": ("write", errno.ENOSPC, "error retry updated! - retry! retry updated - updated"),
    "write, broken": ("write", errno.EIO, "error retry updated! - retry! retry updated - updated"),
    "rename, refused": ("rename", errno.EACCES, "- - - updated! - - - updated updated"),
    "delete, refused": ("delete", errno.EACCES, "updated updated - updated - retry updated - updated"),
    "stat, refused": ("stat", errno.EACCES, "updated updated - retry retry retry - updated updated"),
    "sync, broken": ("sync", errno.EIO, "- - - - - retry updated - updated"),
}
FILES = {"catalogue": "Temp/Update.mdb", "archive": "TESSARYDOTTEXE.zip", "member": ".klnunzip",
         "installed file": "KORLAN/TESSARY.EXE", "models": "KDS_CML/OPAMP.SPC", "index": "Parts.abd",
         "INI, new text": "SYS/.klnprofile", "INI": "SYS/TESSARY.INI", "reminder": "settings/"}


class FaultyServer:
    """The sample's files over HTTP, but for one path that answers as it is told."""

    def __init__(self, files):
        self.files, self.fault = files, ("", None)
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        threading.Thread(target=self.accept, daemon=True).start()

    def accept(self):
        while True:
            threading.Thread(target=self.serve, args=(self.listener.accept()[0],), daemon=True).start()

    def serve(self, client):
        with client, contextlib.suppress(OSError):  # the wizard may hang up first
            while head := client.recv(4096):
                while not head.endswith(b"\r\n\r\n"):
                    head += client.recv(4096)
                name = head.split()[1].decode().split("/")[-1].split("?")[0]
                body = (self.files / name).read_bytes()
                for piece in self.fault[1](body) if name == self.fault[0] else [HEAD % len(body) + body]:
                    if piece is None:
                        return
                    if piece is STALL:
                        client.recv(1)
                        return
                    client.sendall(piece)


def end_of(sample, run):
    """How the run ends, with "!" when the next one does not make up for it; what is torn is an error at once."""
    sample.restore()
    end = run()
    torn = sample.broken_promises()
    after = sample.run()
    lasting = after not in ("updated", "none") or sample.broken_promises(converged=True)
    return end + ("!" if lasting else "") + (f" TORN: {torn}" if torn else "")


def print_table(title, rows, columns, cell):
    """Prints how each cell ends; the number of those that end otherwise than their row says."""
    wrong = 0
    print(f"\n{title:20}" + "".join(f"{column:>20}" for column in columns))
    for row, (*_, expected) in rows.items():
        ends = [cell(row, column) for column in columns]
        expected = expected.split()
        expected += expected[-1:] * (len(ends) - len(expected))
        marks = [end if end == right else f"{end} NOT {right}" for end, right in zip(ends, expected)]
        wrong += sum(" " in mark for mark in marks)
        print(f"{row:20}" + "".join(f"{mark:>20}" for mark in marks), flush=True)
    return wrong


def main():
    sample = Sample(sys.argv[1])
    try:
        server = FaultyServer(sample.out / "www" / "files")
        ini = sample.program / "SYS" / "TESSARY.INI"

        def faulty_request(answer, name):
            def run():
                text = ini.read_bytes()
                ini.write_bytes(text.replace(b":%d/files" % sample.port, b":%d" % server.port))
                server.fault = name, ANSWERS[answer][0]
                end = sample.run()
                ini.write_bytes(ini.read_bytes().replace(b":%d" % server.port, b":%d/files" % sample.port))
                return end
            return end_of(sample, run)

        done = sample.operations()

        def faulty_file(fault, step):
            operation, error, _ = FAULTS[fault]
            if not any(name == operation and FILES[step] in path for name, path in done):
                return "-"
            return end_of(sample, lambda: sample.run(fault=f"{operation} {FILES[step]} 0 {error}"))

        wrong = print_table("answer / request", ANSWERS, REQUESTS, faulty_request)
        wrong += print_table("fault / file", FAULTS, FILES, faulty_file)
        places = int(sys.argv[2]) if len(sys.argv) > 2 else 4
        for operation in ("create", "write", "rename", "delete", "stat", "sync"):
            count = sum(name == operation for name, _ in done)
            tried = sorted({1 + i * (count - 1) // max(places - 1, 1) for i in range(places)})
            ends = [end_of(sample, lambda: sample.run(fault=f"{operation} * {number} {errno.EIO}")) for number in tried]
            wrong += sum("TORN" in end for end in ends)
            print(f"{operation:8} fails once, of {count}: " + ", ".join(map("{}: {}".format, tried, ends)), flush=True)
        print(f"{wrong} cells not as they should be")
    finally:
        sample.close()
    sys.exit(1 if wrong else 0)


main()

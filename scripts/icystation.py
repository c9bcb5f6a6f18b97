#!/usr/bin/env python3
"""A loopback ICY station for screenshots: plays an MP3 file round and round at
its bit rate, with a new song title every few seconds. Prints the port it
listens on, on 127.0.0.1.
Usage: icystation.py MP3FILE"""
import http.server
import sys
import time

METAINT = 8000
BYTES_PER_SECOND = 16000
SONGS = ["Ana Vesna - North", "Ana Vesna - Harbour Lights", "The Quiet Hours - Tram 9"]
SECONDS_PER_SONG = 20


def metadata(title):
    block = f"StreamTitle='{title}';".encode()
    block += b"\0" * (-len(block) % 16)
    return bytes([len(block) // 16]) + block


class Station(http.server.BaseHTTPRequestHandler):
    def do_GET(self):
        with open(sys.argv[1], "rb") as f:
            audio = f.read()
        looped = audio * 2
        titled = self.headers.get("Icy-MetaData") == "1"
        self.send_response(200)
        self.send_header("Content-Type", "audio/mpeg")
        self.send_header("icy-name", "Loopback FM")
        self.send_header("icy-genre", "Test")
        self.send_header("icy-url", "http://station.example/")
        self.send_header("icy-br", "128")
        if titled:
            self.send_header("icy-metaint", str(METAINT))
        self.end_headers()
        start, offset, last = time.monotonic(), 0, None
        try:
            while True:
                piece = looped[offset % len(audio):][:METAINT]
                offset += METAINT
                self.wfile.write(piece)
                if titled:
                    song = SONGS[int(time.monotonic() - start) // SECONDS_PER_SONG % len(SONGS)]
                    self.wfile.write(metadata(song) if song != last else b"\0")
                    last = song
                time.sleep(max(0.0, start + offset / BYTES_PER_SECOND - time.monotonic()))
        except (BrokenPipeError, ConnectionResetError):
            pass

    def log_message(self, *args):
        pass


server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Station)
print(server.server_address[1], flush=True)
server.serve_forever()

"""Uploads through glimpso-s3put to a real S3 server (the Swift fixture) and
reads every object back with an independent client (boto3)."""

import hashlib
import http.client
import http.server
import os
import socket
import subprocess
import threading
import unittest
import urllib.parse

import boto3
from botocore.config import Config
from botocore.exceptions import ClientError

MIB = 1024 * 1024
THRESHOLD = 100 * MIB
ENDPOINT = os.environ["S3_ENDPOINT"]
REGION = os.environ["S3_REGION"]
ACCESS_KEY = os.environ["S3_ACCESS_KEY_ID"]
SECRET_KEY = os.environ["S3_SECRET_ACCESS_KEY"]
S3PUT = os.environ["GLIMPSO_S3PUT"]
WORK = os.environ["GLIMPSO_E2E_WORK"]
BUCKET = "glimpso-e2e"
# A hang guard only: every case ends far sooner when the code is right.
PROCESS_LIMIT_SECONDS = 300


def client():
    return boto3.client("s3", endpoint_url=ENDPOINT, region_name=REGION,
                        aws_access_key_id=ACCESS_KEY, aws_secret_access_key=SECRET_KEY,
                        config=Config(s3={"addressing_style": "path"}, retries={"max_attempts": 1}))


def make_file(name, size):
    path = os.path.join(WORK, name)
    digest = hashlib.sha256()
    with open(path, "wb") as f:
        left = size
        while left:
            chunk = os.urandom(min(left, 8 * MIB))
            digest.update(chunk)
            f.write(chunk)
            left -= len(chunk)
    return path, digest.hexdigest()


def s3put(path, key, endpoint=ENDPOINT, secret=SECRET_KEY, extra=()):
    args = [S3PUT, "--endpoint", endpoint, "--region", REGION, "--bucket", BUCKET,
            "--access-key", ACCESS_KEY, "--secret-key", secret, "--path-style",
            "--file", path, "--key", key, *extra]
    return subprocess.run(args, capture_output=True, text=True, timeout=PROCESS_LIMIT_SECONDS)


def last_line(text):
    lines = [line for line in text.splitlines() if line.strip()]
    return lines[-1] if lines else ""


class Relay:
    """A small HTTP relay between the provider and Swift. `fault` decides per
    request: None forwards it, "500" answers an S3 internal error, "silent"
    reads the request and never answers."""

    def __init__(self, fault):
        upstream = urllib.parse.urlsplit(ENDPOINT)
        self.stop_event = threading.Event()
        relay = self

        class Handler(http.server.BaseHTTPRequestHandler):
            protocol_version = "HTTP/1.1"

            def log_message(self, *args):
                pass

            def handle_any(self):
                length = int(self.headers.get("Content-Length") or 0)
                body = self.rfile.read(length) if length else b""
                verdict = fault(self.command, self.path)
                if verdict == "silent":
                    relay.stop_event.wait(PROCESS_LIMIT_SECONDS)
                    self.close_connection = True
                    return
                if verdict == "500":
                    answer = (b"<?xml version='1.0' encoding='UTF-8'?><Error><Code>InternalError"
                              b"</Code><Message>We encountered an internal error. Please try again."
                              b"</Message></Error>")
                    self.send_response(500)
                    self.send_header("Content-Type", "application/xml")
                    self.send_header("Content-Length", str(len(answer)))
                    self.end_headers()
                    self.wfile.write(answer)
                    return
                conn = http.client.HTTPConnection(upstream.hostname, upstream.port, timeout=120)
                conn.putrequest(self.command, self.path, skip_host=True, skip_accept_encoding=True)
                for name, value in self.headers.items():
                    if name.lower() not in ("connection", "content-length"):
                        conn.putheader(name, value)
                conn.putheader("Content-Length", str(len(body)))
                conn.endheaders(body)
                response = conn.getresponse()
                data = response.read()
                self.send_response(response.status)
                for name, value in response.getheaders():
                    if name.lower() not in ("connection", "content-length", "transfer-encoding"):
                        self.send_header(name, value)
                self.send_header("Content-Length", str(len(data)))
                self.end_headers()
                self.wfile.write(data)
                conn.close()

            do_GET = do_PUT = do_POST = do_DELETE = do_HEAD = handle_any

        self.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Handler)
        self.server.daemon_threads = True
        self.endpoint = f"http://127.0.0.1:{self.server.server_address[1]}"
        self.thread = threading.Thread(target=self.server.serve_forever, daemon=True)

    def __enter__(self):
        self.thread.start()
        return self

    def __exit__(self, *exc):
        self.stop_event.set()
        self.server.shutdown()
        self.server.server_close()


class S3ProviderAgainstSwift(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.s3 = client()
        cls.s3.create_bucket(Bucket=BUCKET)

    def tearDown(self):
        for name in os.listdir(WORK):
            if name.startswith("upload-"):
                os.remove(os.path.join(WORK, name))

    def assert_stored(self, key, digest, size):
        head = self.s3.head_object(Bucket=BUCKET, Key=key)
        self.assertEqual(head["ContentLength"], size)
        self.assertEqual(head["CacheControl"], "public, max-age=31536000, immutable")
        body = self.s3.get_object(Bucket=BUCKET, Key=key)["Body"]
        stored = hashlib.sha256()
        for chunk in iter(lambda: body.read(8 * MIB), b""):
            stored.update(chunk)
        self.assertEqual(stored.hexdigest(), digest)
        return head["ETag"]

    def assert_no_open_uploads(self):
        uploads = self.s3.list_multipart_uploads(Bucket=BUCKET).get("Uploads", [])
        self.assertEqual(uploads, [])

    def test_uploads_one_kibibyte_and_prints_the_object_link(self):
        path, digest = make_file("upload-1k", 1024)
        result = s3put(path, "small/one.bin")
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stdout.strip(), f"{ENDPOINT}/{BUCKET}/small/one.bin")
        self.assert_stored("small/one.bin", digest, 1024)

    def test_uploads_bytes_from_memory_signed_with_their_hash(self):
        path = os.path.join(WORK, "upload-test.txt")
        with open(path, "wb") as f:
            f.write(b"glimpso upload test\n")
        result = s3put(path, "glimpso-test-a1B2c3.txt",
                       extra=["--in-memory", "--content-type", "text/plain"])
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assert_stored("glimpso-test-a1B2c3.txt",
                           hashlib.sha256(b"glimpso upload test\n").hexdigest(), 20)
        head = self.s3.head_object(Bucket=BUCKET, Key="glimpso-test-a1B2c3.txt")
        self.assertEqual(head["ContentType"], "text/plain")

    def test_puts_the_object_under_the_key_prefix(self):
        path, digest = make_file("upload-prefixed", 2048)
        result = s3put(path, "p.bin", extra=["--key-prefix", " /team shots/ "])
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stdout.strip(), f"{ENDPOINT}/{BUCKET}/team%20shots/p.bin")
        self.assert_stored("team shots/p.bin", digest, 2048)

    def test_sends_exactly_the_threshold_as_one_put(self):
        path, digest = make_file("upload-100m", THRESHOLD)
        result = s3put(path, "big/exact.bin")
        self.assertEqual(result.returncode, 0, result.stderr)
        etag = self.assert_stored("big/exact.bin", digest, THRESHOLD)
        self.assertNotIn("-", etag, "a single PUT has a plain MD5 ETag")

    def test_sends_one_byte_over_the_threshold_as_multipart(self):
        path, digest = make_file("upload-100m1", THRESHOLD + 1)
        result = s3put(path, "big/over.bin")
        self.assertEqual(result.returncode, 0, result.stderr)
        etag = self.assert_stored("big/over.bin", digest, THRESHOLD + 1)
        self.assertTrue(etag.strip('"').endswith("-7"), etag)
        self.assert_no_open_uploads()

    def test_keeps_blanks_unicode_and_slashes_of_a_key(self):
        key = "my shots/été 2026/ünïcødé + plus & more (1).png"
        path, digest = make_file("upload-key", 4096)
        result = s3put(path, key, extra=["--public-base-url", "https://cdn.example.com/pub"])
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stdout.strip(), "https://cdn.example.com/pub/" +
                         urllib.parse.quote(key, safe="/-_.~"))
        self.assert_stored(key, digest, 4096)

    def test_keeps_blanks_and_unicode_through_multipart(self):
        key = "clips/ünï cødé.mp4"
        path, digest = make_file("upload-mp-key", 20 * MIB)
        result = s3put(path, key, extra=["--multipart-threshold", "0"])
        self.assertEqual(result.returncode, 0, result.stderr)
        etag = self.assert_stored(key, digest, 20 * MIB)
        self.assertTrue(etag.strip('"').endswith("-2"), etag)

    def test_reports_a_wrong_secret_with_the_servers_message(self):
        path, _ = make_file("upload-wrong", 1024)
        result = s3put(path, "wrong/secret.bin", secret="not-the-secret")
        self.assertEqual(result.returncode, 1)
        self.assertEqual(last_line(result.stderr),
                         "HTTP 403: The request signature we calculated does not match the "
                         "signature you provided. Check your key and signing method.")
        with self.assertRaises(ClientError):
            self.s3.head_object(Bucket=BUCKET, Key="wrong/secret.bin")

    def test_is_refused_when_the_signing_clock_is_twenty_minutes_off(self):
        path, _ = make_file("upload-skew", 1024)
        result = s3put(path, "skew.bin", extra=["--clock-offset", "1200"])
        self.assertEqual(result.returncode, 1)
        self.assertTrue(last_line(result.stderr).startswith("HTTP 403: "), result.stderr)
        with self.assertRaises(ClientError):
            self.s3.head_object(Bucket=BUCKET, Key="skew.bin")

    def test_times_out_when_the_server_stops_answering(self):
        path, _ = make_file("upload-silent", 1024)
        with Relay(lambda method, target: "silent") as relay:
            result = s3put(path, "silent.bin", endpoint=relay.endpoint,
                           extra=["--request-timeout", "2"])
        self.assertEqual(result.returncode, 1)
        self.assertEqual(last_line(result.stderr), "The request timed out.")

    def test_aborts_the_multipart_upload_when_a_part_fails(self):
        path, _ = make_file("upload-fail", 40 * MIB)

        def fail_second_part(method, target):
            query = urllib.parse.parse_qs(urllib.parse.urlsplit(target).query)
            return "500" if method == "PUT" and query.get("partNumber") == ["2"] else None

        with Relay(fail_second_part) as relay:
            result = s3put(path, "failed/half.bin", endpoint=relay.endpoint,
                           extra=["--multipart-threshold", "0"])
        self.assertEqual(result.returncode, 1)
        self.assertEqual(last_line(result.stderr),
                         "HTTP 500: We encountered an internal error. Please try again.")
        with self.assertRaises(ClientError):
            self.s3.head_object(Bucket=BUCKET, Key="failed/half.bin")
        self.assert_no_open_uploads()


if __name__ == "__main__":
    unittest.main()

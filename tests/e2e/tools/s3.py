#!/usr/bin/python3
"""boto3, an S3 client independent of glimpso, with the case's keys from the
environment (S3_ENDPOINT, S3_REGION, S3_ACCESS_KEY_ID, S3_SECRET_ACCESS_KEY).

    s3.py create-public-bucket BUCKET   a bucket anyone may read
    s3.py head BUCKET KEY               "ETag Content-Type Content-Length"
    s3.py open-uploads BUCKET           one line per unfinished multipart upload
"""
import os
import sys

import boto3
from botocore.config import Config


def client():
    return boto3.client("s3", endpoint_url=os.environ["S3_ENDPOINT"], region_name=os.environ.get("S3_REGION", "us-east-1"),
                        aws_access_key_id=os.environ["S3_ACCESS_KEY_ID"],
                        aws_secret_access_key=os.environ["S3_SECRET_ACCESS_KEY"],
                        config=Config(s3={"addressing_style": "path"}, retries={"max_attempts": 1}))


def main(action, *args):
    s3 = client()
    if action == "create-public-bucket":
        s3.create_bucket(Bucket=args[0])
        # Swift turns the canned ACL into a container anyone may read through its own API.
        s3.put_bucket_acl(Bucket=args[0], ACL="public-read")
    elif action == "head":
        head = s3.head_object(Bucket=args[0], Key=args[1])
        print(head["ETag"], head["ContentType"], head["ContentLength"])
    elif action == "open-uploads":
        for upload in s3.list_multipart_uploads(Bucket=args[0]).get("Uploads", []):
            print(upload["Key"], upload["UploadId"])
    else:
        sys.exit(f"unknown action {action}")


if __name__ == "__main__":
    main(*sys.argv[1:])

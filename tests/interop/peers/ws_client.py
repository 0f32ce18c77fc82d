"""A WebSocket client that does what it is told on standard input: ws_client.py URL

Prints what happens, one line each. A long message is told by its length.
"""

import asyncio
import ssl
import sys

import websockets


def tell(*words):
    print(*words, flush=True)


async def listen(socket):
    try:
        async for message in socket:
            tell("message", message if len(message) < 1000 else "of %d" % len(message))
    except websockets.ConnectionClosed:
        pass
    tell("closed", socket.close_code, socket.close_reason)


async def obey(socket, order):
    words = order.rstrip("\n").split(" ")
    if words[0] == "text":
        await socket.send(order.rstrip("\n")[len("text "):])
    elif words[0] == "size":
        await socket.send("x" * int(words[1]))
    elif words[0] == "fragments":
        await socket.send(words[1:])
    elif words[0] == "binary":
        await socket.send(b"\x00\xff")
    elif words[0] == "ping":
        await asyncio.wait_for(await socket.ping(words[1]), 10)
        tell("pong", words[1])
    elif words[0] == "close":
        await socket.close(int(words[1]), " ".join(words[2:]))
    elif words[0] == "vanish":
        socket.transport.abort()


async def main():
    url = sys.argv[1]
    context = None
    if url.startswith("wss:"):
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_CLIENT)
        context.check_hostname = False
        context.verify_mode = ssl.CERT_NONE
    socket = await websockets.connect(url, ssl=context, max_size=None, ping_interval=None)
    tell("open")
    listening = asyncio.create_task(listen(socket))
    loop = asyncio.get_running_loop()
    while True:
        order = await loop.run_in_executor(None, sys.stdin.readline)
        if not order:
            break
        await obey(socket, order)
    listening.cancel()


asyncio.run(main())

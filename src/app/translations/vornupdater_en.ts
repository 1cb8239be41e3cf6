<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en" sourcelanguage="en">
<!-- Only the texts that read otherwise than in the code. -->
<context>
    <name>ViewController</name>
    <message>
        <source>Serial Port %1 was connected to your Mac.</source>
        <translation>Serial Port %1 was connected to your computer.</translation>
    </message>
    <message>
        <source>Serial Port %1 was disconnected from your Mac.</source>
        <translation>Serial Port %1 was disconnected from your computer.</translation>
    </message>
</context>
</TS>

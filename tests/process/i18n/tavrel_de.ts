<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="de_DE" sourcelanguage="zh_CN">
<context>
    <name>LanguagesTest</name>
    <message><source>保存</source><translation>Speichern</translation></message>
</context>
</TS>

<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US" sourcelanguage="zh_CN">
<context>
    <name>LanguagesTest</name>
    <message><source>保存</source><translation>Save</translation></message>
    <message><source>取消</source><translation>Cancel</translation></message>
</context>
</TS>

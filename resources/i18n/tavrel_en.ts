<?xml version="1.0" encoding="utf-8"?>
<!DOCTYPE TS>
<TS version="2.1" language="en_US" sourcelanguage="zh_CN">
<context>
    <name>AppController</name>
    <message>
        <source>Tavrel 快捷键注册失败</source>
        <translation>Tavrel: failed to register hotkey</translation>
    </message>
    <message>
        <source>Tavrel 需要「屏幕录制」权限才能截图。</source>
        <translation>Tavrel needs the Screen Recording permission to take screenshots.</translation>
    </message>
    <message>
        <source>请在 系统设置 → 隐私与安全性 → 屏幕录制与系统音频录制 中勾选 Tavrel</source>
        <translation>Turn on Tavrel under System Settings → Privacy &amp; Security → Screen &amp; System Audio Recording</translation>
    </message>
    <message>
        <source>打开系统设置</source>
        <translation>Open System Settings</translation>
    </message>
    <message>
        <source>稍后</source>
        <translation>Later</translation>
    </message>
    <message>
        <source>需要屏幕录制权限</source>
        <translation>Screen Recording permission required</translation>
    </message>
    <message>
        <source>此版本还不能打开录制文件。</source>
        <translation>This version cannot open recordings yet.</translation>
    </message>
    <message>
        <source>无法打开录像</source>
        <translation>Cannot open recording</translation>
    </message>
    <message>
        <source>按 %1 开始截图。</source>
        <translation>Press %1 to start a capture.</translation>
    </message>
    <message>
        <source>截图快捷键没有生效，可以用命令 tavrel --capture 截图。</source>
        <translation>The capture hotkey is not active; the command tavrel --capture starts a capture.</translation>
    </message>
    <message>
        <source>Tavrel 正在运行</source>
        <translation>Tavrel is running</translation>
    </message>
    <message>
        <source>截图失败</source>
        <translation>Capture failed</translation>
    </message>
    <message>
        <source>截图历史</source>
        <translation>Capture history</translation>
    </message>
    <message>
        <source>该历史记录的图像文件缺失</source>
        <translation>The image file for this history entry is missing</translation>
    </message>
    <message>
        <source>截图</source>
        <translation>Capture</translation>
    </message>
    <message>
        <source>长截图</source>
        <translation>Scrolling Capture</translation>
    </message>
    <message>
        <source>录屏</source>
        <translation>Record Screen</translation>
    </message>
    <message>
        <source>录制指南</source>
        <translation>Record guide</translation>
    </message>
    <message>
        <source>贴图剪贴板</source>
        <translation>Pin clipboard</translation>
    </message>
    <message>
        <source>图片编辑</source>
        <translation>Image Editor</translation>
    </message>
    <message>
        <source>文字识别</source>
        <translation>Text recognition</translation>
    </message>
    <message>
        <source>与「%1」冲突</source>
        <translation>Conflicts with &quot;%1&quot;</translation>
    </message>
    <message>
        <source>%1：%2</source>
        <translation>%1: %2</translation>
    </message>
    <message>
        <source>设置…</source>
        <translation>Settings…</translation>
    </message>
    <message>
        <source>复制失败</source>
        <translation>Copy failed</translation>
    </message>
    <message>
        <source>剪贴板被其他程序占用，请重试</source>
        <translation>Another program holds the clipboard, please try again</translation>
    </message>
    <message>
        <source>另存为</source>
        <translation>Save as</translation>
    </message>
    <message>
        <source>保存截图</source>
        <translation>Save screenshot</translation>
    </message>
    <message>
        <source>图片 (*.png *.jpg)</source>
        <translation>Images (*.png *.jpg)</translation>
    </message>
    <message>
        <source>保存失败</source>
        <translation>Save failed</translation>
    </message>
    <message>
        <source>已保存</source>
        <translation>Saved</translation>
    </message>
    <message>
        <source>退出 Tavrel</source>
        <translation>Quit Tavrel</translation>
    </message>
    <message>
        <source>抓取屏幕失败</source>
        <translation>Screen capture failed</translation>
    </message>
    <message>
        <source>此版本还没有这项功能。</source>
        <translation>This version does not have this yet.</translation>
    </message>
    <message>
        <source>整个屏幕</source>
        <translation>Entire screen</translation>
    </message>
    <message>
        <source>选择区域…</source>
        <translation>Choose a region…</translation>
    </message>
    <message>
        <source>只记录某个应用：</source>
        <translation>Record only one app:</translation>
    </message>
    <message>
        <source>%1（%2 步）</source>
        <translation>%1 (%2 steps)</translation>
    </message>
    <message>
        <source>还没有操作指南</source>
        <translation>No guides yet</translation>
    </message>
    <message>
        <source>关闭所有贴图</source>
        <translation>Close all pins</translation>
    </message>
    <message>
        <source>取消贴图点击穿透</source>
        <translation>Disable click-through on all pins</translation>
    </message>
    <message>
        <source>截图历史…</source>
        <translation>Screenshot History…</translation>
    </message>
    <message>
        <source>图片编辑…</source>
        <translation>Edit Image…</translation>
    </message>
    <message>
        <source>打开录像…</source>
        <translation>Open Recording…</translation>
    </message>
    <message>
        <source>账号…</source>
        <translation>Account…</translation>
    </message>
    <message>
        <source>使用指南…</source>
        <translation>Welcome guide…</translation>
    </message>
    <message>
        <source>发送反馈…</source>
        <translation>Send feedback…</translation>
    </message>
    <message>
        <source>检查更新…</source>
        <translation>Check for Updates…</translation>
    </message>
    <message>
        <source>停止录屏</source>
        <translation>Stop Recording</translation>
    </message>
    <message>
        <source>停止录制指南（%1 步）</source>
        <translation>Stop recording guide (%1)</translation>
    </message>
    <message>
        <source>指南录制范围</source>
        <translation>Guide Recording Scope</translation>
    </message>
    <message>
        <source>最近的指南</source>
        <translation>Recent guides</translation>
    </message>
    <message>
        <source>无法打开浏览器</source>
        <translation>Could not open the browser</translation>
    </message>
    <message>
        <source>请自行打开这个地址：%1</source>
        <translation>Please open this address yourself: %1</translation>
    </message>
    <message>
        <source>在托盘菜单里选择“检查更新…”查看内容。</source>
        <translation>Choose &quot;Check for Updates…&quot; in the tray menu to read about it.</translation>
    </message>
    <message>
        <source>图片无法生成，可能是内存不足</source>
        <translation>The picture could not be made; memory may be short</translation>
    </message>
    <message>
        <source>正在生成图片…</source>
        <translation>Making the picture…</translation>
    </message>
</context>
<context>
    <name>CaptureOverlay</name>
    <message>
        <source>截图选区</source>
        <translation>Capture selection</translation>
    </message>
    <message>
        <source>拖拽选择区域，Enter 复制，Esc 取消</source>
        <translation>Drag to select, Enter copies, Esc leaves</translation>
    </message>
    <message>
        <source>Shift 切换 · C 复制</source>
        <translation>Shift switch · C copy</translation>
    </message>
    <message>
        <source>滚轮</source>
        <translation>Wheel</translation>
    </message>
    <message>
        <source>调整粗细</source>
        <translation>Thickness</translation>
    </message>
    <message>
        <source>Shift + 拖拽</source>
        <translation>Shift + drag</translation>
    </message>
    <message>
        <source>起点到光标画直线</source>
        <translation>Straight line to the pointer</translation>
    </message>
    <message>
        <source>保持正方形</source>
        <translation>Keep a square</translation>
    </message>
    <message>
        <source>保持正圆</source>
        <translation>Keep a circle</translation>
    </message>
    <message>
        <source>拖拽</source>
        <translation>Drag</translation>
    </message>
    <message>
        <source>框选范围，整块高亮</source>
        <translation>Highlight a whole area</translation>
    </message>
    <message>
        <source>点击 / 拖动</source>
        <translation>Click / drag</translation>
    </message>
    <message>
        <source>擦除碰到的标注</source>
        <translation>Erase annotations you touch</translation>
    </message>
    <message>
        <source>点击</source>
        <translation>Click</translation>
    </message>
    <message>
        <source>添加序号</source>
        <translation>Add a number</translation>
    </message>
    <message>
        <source>A </source>
        <translation>A </translation>
    </message>
    <message>
        <source>给选中的序号输入文字</source>
        <translation>Label the selected number</translation>
    </message>
    <message>
        <source>调整字号</source>
        <translation>Text size</translation>
    </message>
    <message>
        <source>框选要打码的区域</source>
        <translation>Choose the area to hide</translation>
    </message>
    <message>
        <source>调整马赛克 / 模糊强度</source>
        <translation>Mosaic / blur strength</translation>
    </message>
    <message>
        <source>框选</source>
        <translation>Drag a box</translation>
    </message>
    <message>
        <source>用周围背景覆盖遮住内容</source>
        <translation>Cover the content with its surroundings</translation>
    </message>
    <message>
        <source>框选高亮区域，周围压暗</source>
        <translation>Highlight an area, dim the rest</translation>
    </message>
    <message>
        <source>正方形 / 正圆</source>
        <translation>Square / circle</translation>
    </message>
    <message>
        <source>输入文字</source>
        <translation>Type text</translation>
    </message>
    <message>
        <source>在属性栏输入后立即出现水印</source>
        <translation>The watermark appears as you type in the bar</translation>
    </message>
    <message>
        <source>点击时间块</source>
        <translation>Click a time block</translation>
    </message>
    <message>
        <source>插入当前时间（退格整块删除）</source>
        <translation>Insert the current time (Backspace removes it whole)</translation>
    </message>
    <message>
        <source>调整透明度</source>
        <translation>Opacity</translation>
    </message>
    <message>
        <source>Shift + 滚轮</source>
        <translation>Shift + wheel</translation>
    </message>
    <message>
        <source>调整大小</source>
        <translation>Size</translation>
    </message>
    <message>
        <source>框选要放大的区域</source>
        <translation>Choose the area to magnify</translation>
    </message>
    <message>
        <source>调整放大倍数</source>
        <translation>Magnification</translation>
    </message>
    <message>
        <source>添加文字</source>
        <translation>Add text</translation>
    </message>
    <message>
        <source>取消截图</source>
        <translation>Cancel capture</translation>
    </message>
    <message>
        <source>快速复制</source>
        <translation>Quick copy</translation>
    </message>
    <message>
        <source>框选全屏</source>
        <translation>Select full screen</translation>
    </message>
    <message>
        <source>复制选区</source>
        <translation>Copy selection</translation>
    </message>
    <message>
        <source>保存截图</source>
        <translation>Save screenshot</translation>
    </message>
    <message>
        <source>贴图</source>
        <translation>Pin</translation>
    </message>
    <message>
        <source>上一个历史截图</source>
        <translation>Previous history screenshot</translation>
    </message>
    <message>
        <source>下一个历史截图</source>
        <translation>Next history screenshot</translation>
    </message>
    <message>
        <source>本版本不含文字识别组件</source>
        <translation>This build does not include text recognition</translation>
    </message>
    <message>
        <source>此版本还没有这个功能</source>
        <translation>This version cannot do this yet</translation>
    </message>
    <message>
        <source>请先拖拽选定识别区域</source>
        <translation>Drag to select the area to recognize first</translation>
    </message>
    <message>
        <source>请先框选要拼接的区域</source>
        <translation>Select the area to stitch first</translation>
    </message>
    <message>
        <source>选区太小，长截图需要一块足够大的区域</source>
        <translation>The selection is too small for a long screenshot</translation>
    </message>
    <message>
        <source>没有拼出内容：滚动页面后再试</source>
        <translation>Nothing was stitched — scroll the page and try again</translation>
    </message>
</context>
<context>
    <name>Dialogs</name>
    <message>
        <source>好</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>确定</source>
        <translation>OK</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>选择颜色</source>
        <translation>Choose a color</translation>
    </message>
    <message>
        <source>使用</source>
        <translation>Use</translation>
    </message>
</context>
<context>
    <name>FeedUpdater</name>
    <message>
        <source>更新服务器没有及时答复。</source>
        <translation>The update server did not answer in time.</translation>
    </message>
    <message>
        <source>更新源过大，已放弃读取。</source>
        <translation>The update feed is too large and was not read.</translation>
    </message>
    <message>
        <source>无法连接更新服务器：%1</source>
        <translation>Could not reach the update server: %1</translation>
    </message>
    <message>
        <source>更新源转向了不安全的地址，已放弃。</source>
        <translation>The update feed redirects to an address that is not secure; given up.</translation>
    </message>
    <message>
        <source>更新源转向次数过多，已放弃。</source>
        <translation>The update feed redirects too often; given up.</translation>
    </message>
    <message>
        <source>更新源没有签名，已忽略其内容。</source>
        <translation>The update feed is not signed; its contents were ignored.</translation>
    </message>
    <message>
        <source>更新服务器答复了错误（HTTP %1）。</source>
        <translation>The update server answered with an error (HTTP %1).</translation>
    </message>
    <message>
        <source>更新源的签名不正确，已忽略其内容。</source>
        <translation>The signature of the update feed is wrong; its contents were ignored.</translation>
    </message>
    <message>
        <source>更新源的内容无法读取。</source>
        <translation>The update feed could not be read.</translation>
    </message>
    <message>
        <source>找不到更新服务器 %1。</source>
        <translation>Could not find the update server %1.</translation>
    </message>
</context>
<context>
    <name>HotkeyProbe</name>
    <message>
        <source>系统不接受模拟按键，无法验证按键是否送达。</source>
        <translation>The system takes no injected keys, so it cannot be proved that a press arrives.</translation>
    </message>
    <message>
        <source>未设置</source>
        <translation>not set</translation>
    </message>
    <message>
        <source>已注册，模拟按键 %1 ms 送达</source>
        <translation>registered, an injected press arrived after %1 ms</translation>
    </message>
    <message>
        <source>已注册，但模拟按键没有送达</source>
        <translation>registered, but an injected press did not arrive</translation>
    </message>
    <message>
        <source>已注册</source>
        <translation>registered</translation>
    </message>
    <message>
        <source>有一个 Tavrel 正在运行，它占着自己的快捷键；先用 tavrel --quit 退出它。</source>
        <translation>A Tavrel is running and holds its own hotkeys; end it first with tavrel --quit.</translation>
    </message>
    <message>
        <source>也可以在桌面自己的快捷键设置里调用每行末尾的命令；Tavrel 在运行时命令会转交给它。</source>
        <translation>The desktop&apos;s own shortcut settings can call the command at the end of each line as well; it is handed to the Tavrel that runs.</translation>
    </message>
</context>
<context>
    <name>QObject</name>
    <message>
        <source>按键组合无效</source>
        <translation>Invalid key combination</translation>
    </message>
    <message>
        <source>不支持的按键</source>
        <translation>Unsupported key</translation>
    </message>
    <message>
        <source>该组合键已被其他程序占用</source>
        <translation>This combination is already taken by another program</translation>
    </message>
    <message>
        <source>无法安装键盘钩子（错误码 %1）</source>
        <translation>Could not install the keyboard hook (error %1)</translation>
    </message>
    <message>
        <source>当前系统不支持此功能</source>
        <translation>This system does not support this function</translation>
    </message>
    <message>
        <source>无法安装键鼠监听</source>
        <translation>Couldn&apos;t install the keyboard/mouse listener</translation>
    </message>
    <message>
        <source>该组合键已被其他程序占用（可能是 %1）</source>
        <translation>This combination is taken by another program (possibly %1)</translation>
    </message>
    <message>
        <source>、</source>
        <translation>, </translation>
    </message>
    <message>
        <source>窗口管理器 %1</source>
        <translation>the window manager %1</translation>
    </message>
</context>
<context>
    <name>SaveService</name>
    <message>
        <source>没有可保存的图片</source>
        <translation>There is no image to save</translation>
    </message>
    <message>
        <source>写入文件失败：%1</source>
        <translation>Failed to write file: %1</translation>
    </message>
    <message>
        <source>未指定保存目录</source>
        <translation>No save folder specified</translation>
    </message>
    <message>
        <source>无法创建目录：%1</source>
        <translation>Cannot create folder: %1</translation>
    </message>
</context>
<context>
    <name>ToolGuideBubble</name>
    <message>
        <source>、</source>
        <translation>, </translation>
    </message>
    <message>
        <source>%1 收在这里，点箭头展开，还可自行配置</source>
        <translation>%1 are tucked away here. Click the arrow to expand; you can also customize them</translation>
    </message>
</context>
<context>
    <name>ToolbarConfigDialog</name>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>完成</source>
        <translation>Done</translation>
    </message>
</context>
<context>
    <name>ToolbarLayoutEditor</name>
    <message>
        <source>工具栏配置</source>
        <translation>Toolbar settings</translation>
    </message>
    <message>
        <source>恢复默认</source>
        <translation>Restore defaults</translation>
    </message>
    <message>
        <source>按住工具拖动：在工具栏内松手 = 调整位置；拖进下方「待选工具」= 收起</source>
        <translation>Drag a tool: drop it inside the toolbar to move it, or onto “Available tools” below to collapse it</translation>
    </message>
    <message>
        <source>工具栏</source>
        <translation>Toolbar</translation>
    </message>
    <message>
        <source>待选工具（拖到这里 = 收起）</source>
        <translation>Available tools (drop here to collapse)</translation>
    </message>
    <message>
        <source>方向键选择工具；Ctrl + ←/→ = 调整位置；空格 = 收起或放回</source>
        <translation>Arrow keys choose a tool; Ctrl + ←/→ moves it; Space collapses it or puts it back</translation>
    </message>
</context>
<context>
    <name>ToolbarWidget</name>
    <message>
        <source>形状</source>
        <translation>Shape</translation>
    </message>
    <message>
        <source>线条</source>
        <translation>Lines</translation>
    </message>
    <message>
        <source>画笔</source>
        <translation>Pen</translation>
    </message>
    <message>
        <source>马克笔</source>
        <translation>Marker</translation>
    </message>
    <message>
        <source>橡皮</source>
        <translation>Eraser</translation>
    </message>
    <message>
        <source>智能擦除</source>
        <translation>Smart erase</translation>
    </message>
    <message>
        <source>聚光灯</source>
        <translation>Spotlight</translation>
    </message>
    <message>
        <source>放大镜</source>
        <translation>Magnifier</translation>
    </message>
    <message>
        <source>水印</source>
        <translation>Watermark</translation>
    </message>
    <message>
        <source>马赛克</source>
        <translation>Mosaic</translation>
    </message>
    <message>
        <source>文字</source>
        <translation>Text</translation>
    </message>
    <message>
        <source>序号</source>
        <translation>Numbers</translation>
    </message>
    <message>
        <source>OCR</source>
        <translation>OCR</translation>
    </message>
    <message>
        <source>录制</source>
        <translation>Record</translation>
    </message>
    <message>
        <source>长截图</source>
        <translation>Long screenshot</translation>
    </message>
    <message>
        <source>撤销</source>
        <translation>Undo</translation>
    </message>
    <message>
        <source>重做</source>
        <translation>Redo</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
    <message>
        <source>贴图</source>
        <translation>Pin</translation>
    </message>
    <message>
        <source>上传</source>
        <translation>Upload</translation>
    </message>
    <message>
        <source>保存</source>
        <translation>Save</translation>
    </message>
    <message>
        <source>复制</source>
        <translation>Copy</translation>
    </message>
    <message>
        <source>配置工具栏</source>
        <translation>Configure toolbar</translation>
    </message>
    <message>
        <source>展开收起的工具</source>
        <translation>Show collapsed tools</translation>
    </message>
</context>
<context>
    <name>UpdateMessages</name>
    <message>
        <source>当前版本是 %1。</source>
        <translation>This is version %1.</translation>
    </message>
    <message>
        <source>发布日期：%1</source>
        <translation>Released: %1</translation>
    </message>
    <message>
        <source>有新版本 %1</source>
        <translation>Version %1 is available</translation>
    </message>
    <message>
        <source>打开下载页</source>
        <translation>Open Download Page</translation>
    </message>
    <message>
        <source>以后再说</source>
        <translation>Later</translation>
    </message>
    <message>
        <source>已是最新版本</source>
        <translation>Up to date</translation>
    </message>
    <message>
        <source>Tavrel %1 是目前的最新版本。</source>
        <translation>Tavrel %1 is the latest version.</translation>
    </message>
    <message>
        <source>检查更新失败</source>
        <translation>The check for updates failed</translation>
    </message>
</context>
<context>
    <name>WatermarkShape</name>
    <message>
        <source>平铺</source>
        <translation>Tile</translation>
    </message>
    <message>
        <source>右下角</source>
        <translation>Bottom right</translation>
    </message>
    <message>
        <source>左下角</source>
        <translation>Bottom left</translation>
    </message>
    <message>
        <source>右上角</source>
        <translation>Top right</translation>
    </message>
    <message>
        <source>左上角</source>
        <translation>Top left</translation>
    </message>
    <message>
        <source>顶部居中</source>
        <translation>Top center</translation>
    </message>
    <message>
        <source>底部居中</source>
        <translation>Bottom center</translation>
    </message>
    <message>
        <source>居中</source>
        <translation>Center</translation>
    </message>
    <message>
        <source>年月日</source>
        <translation>Date</translation>
    </message>
    <message>
        <source>时分秒</source>
        <translation>Time</translation>
    </message>
    <message>
        <source>年</source>
        <translation>Year</translation>
    </message>
    <message>
        <source>月</source>
        <translation>Month</translation>
    </message>
    <message>
        <source>日</source>
        <translation>Day</translation>
    </message>
    <message>
        <source>时</source>
        <translation>Hour</translation>
    </message>
    <message>
        <source>12时</source>
        <translation>12-hour</translation>
    </message>
    <message>
        <source>分</source>
        <translation>Min</translation>
    </message>
    <message>
        <source>秒</source>
        <translation>Sec</translation>
    </message>
    <message>
        <source>上午/下午</source>
        <translation>AM/PM</translation>
    </message>
</context>
<context>
    <name>WindowChrome</name>
    <message>
        <source>最小化</source>
        <translation>Minimize</translation>
    </message>
    <message>
        <source>还原</source>
        <translation>Restore</translation>
    </message>
    <message>
        <source>最大化</source>
        <translation>Maximize</translation>
    </message>
    <message>
        <source>关闭</source>
        <translation>Close</translation>
    </message>
</context>
<context>
    <name>XdgAutoStart</name>
    <message>
        <source>无法删除自动启动项：%1</source>
        <translation>Could not delete the start-up entry: %1</translation>
    </message>
    <message>
        <source>无法写入自动启动项：%1</source>
        <translation>Could not write the start-up entry: %1</translation>
    </message>
</context>
<context>
    <name>main</name>
    <message>
        <source>启动后立即发起一次截图。</source>
        <translation>Start one capture right after start-up.</translation>
    </message>
    <message>
        <source>启动后直接打开设置窗口。</source>
        <translation>Open the settings window after start-up.</translation>
    </message>
    <message>
        <source>启动后直接打开截图历史页。</source>
        <translation>Open the capture history after start-up.</translation>
    </message>
    <message>
        <source>用指定语言（system / zh / en）跑这次会话，**不写回设置**（自检、界面目视检查用）。</source>
        <translation>Run this session in the given language (system / zh / en) **without saving it to the settings** (for self-checks and looking at the interface).</translation>
    </message>
    <message>
        <source>用合成图代替系统抓屏（无需屏幕录制权限，排查界面问题用）。</source>
        <translation>Use a synthetic picture instead of grabbing the screen (needs no screen recording permission; for tracking down interface problems).</translation>
    </message>
    <message>
        <source>启动后 N 毫秒自动退出（冒烟测试用）。</source>
        <translation>Quit N milliseconds after start-up (for smoke tests).</translation>
    </message>
    <message>
        <source>依次应用 system / zh / en，打印 app 与 Qt 自带翻译的结果后退出（诊断用）。</source>
        <translation>Apply system / zh / en in turn, print the results for the app and for Qt&apos;s own translations, then exit (diagnostic).</translation>
    </message>
    <message>
        <source>Tavrel 截图 / 标注 / 贴图工具</source>
        <translation>Tavrel screenshot / annotate / pin tool</translation>
    </message>
    <message>
        <source>要打开的 .tavrel 录制文件。</source>
        <translation>The .tavrel recording to open.</translation>
    </message>
    <message>
        <source>启动后立即发起一次长截图。</source>
        <translation>Starts a scrolling capture right after start-up.</translation>
    </message>
    <message>
        <source>截图并识别文字。</source>
        <translation>Captures and recognises text.</translation>
    </message>
    <message>
        <source>开始或停止录屏。</source>
        <translation>Starts or stops a screen recording.</translation>
    </message>
    <message>
        <source>开始或结束录制指南。</source>
        <translation>Starts or finishes recording a guide.</translation>
    </message>
    <message>
        <source>把剪贴板内容贴到屏幕上。</source>
        <translation>Pins what is on the clipboard to the screen.</translation>
    </message>
    <message>
        <source>打开图片编辑。</source>
        <translation>Opens the image editor.</translation>
    </message>
    <message>
        <source>退出正在运行的 Tavrel。</source>
        <translation>Quits the running Tavrel.</translation>
    </message>
</context>
<context>
    <name>tavrel::platform::X11ScreenCapturer</name>
    <message>
        <source>抓取屏幕失败：%1</source>
        <translation>Screen capture failed: %1</translation>
    </message>
</context>
<context>
    <name>tavrel::ui::AttributeBar</name>
    <message>
        <source>点击或拖动，擦除碰到的标注</source>
        <translation>Click or drag to erase annotations</translation>
    </message>
    <message>
        <source>粗细</source>
        <translation>Width</translation>
    </message>
    <message>
        <source>字号</source>
        <translation>Font size</translation>
    </message>
    <message>
        <source>更多颜色</source>
        <translation>More colors</translation>
    </message>
    <message>
        <source>当前颜色</source>
        <translation>Current color</translation>
    </message>
    <message>
        <source>矩形</source>
        <translation>Rectangle</translation>
    </message>
    <message>
        <source>圆形</source>
        <translation>Ellipse</translation>
    </message>
    <message>
        <source>箭头</source>
        <translation>Arrow</translation>
    </message>
    <message>
        <source>楔形</source>
        <translation>Wedge</translation>
    </message>
    <message>
        <source>空心</source>
        <translation>Outline wedge</translation>
    </message>
    <message>
        <source>直线</source>
        <translation>Line</translation>
    </message>
    <message>
        <source>双向</source>
        <translation>Double</translation>
    </message>
    <message>
        <source>画笔</source>
        <translation>Pen</translation>
    </message>
    <message>
        <source>区域</source>
        <translation>Area</translation>
    </message>
    <message>
        <source>智能整行：划过文字自动标记整行（需要文字识别）</source>
        <translation>Smart line: sweep over text to highlight whole lines (needs OCR)</translation>
    </message>
    <message>
        <source>智能整行</source>
        <translation>Snap to line</translation>
    </message>
    <message>
        <source>序号样式</source>
        <translation>Number style</translation>
    </message>
    <message>
        <source>一 二 三</source>
        <translation>一 二 三 (Chinese)</translation>
    </message>
    <message>
        <source>序号：改了之后，后面的序号自动顺延（没选中序号时 = 下一个要放的序号）</source>
        <translation>Number: later numbers follow automatically (with none selected: the next number to place)</translation>
    </message>
    <message>
        <source>序号</source>
        <translation>Number</translation>
    </message>
    <message>
        <source>马赛克</source>
        <translation>Mosaic</translation>
    </message>
    <message>
        <source>模糊</source>
        <translation>Blur</translation>
    </message>
    <message>
        <source>涂抹</source>
        <translation>Brush</translation>
    </message>
    <message>
        <source>马赛克块大小</source>
        <translation>Mosaic block size</translation>
    </message>
    <message>
        <source>模糊强度</source>
        <translation>Blur strength</translation>
    </message>
    <message>
        <source>只删主体，保留框内的背景</source>
        <translation>Remove only the subject, keep the background in the box</translation>
    </message>
    <message>
        <source>整个框都补掉</source>
        <translation>Fill the whole box</translation>
    </message>
    <message>
        <source>淡</source>
        <translation>Light</translation>
    </message>
    <message>
        <source>中</source>
        <translation>Medium</translation>
    </message>
    <message>
        <source>深</source>
        <translation>Dark</translation>
    </message>
    <message>
        <source>%1×</source>
        <translation>%1×</translation>
    </message>
    <message>
        <source>在画面上滚轮调整放大倍数</source>
        <translation>Scroll on the image to change the zoom</translation>
    </message>
    <message>
        <source>标准</source>
        <translation>Standard</translation>
    </message>
    <message>
        <source>描边</source>
        <translation>Outline</translation>
    </message>
    <message>
        <source>背景</source>
        <translation>Background</translation>
    </message>
    <message>
        <source>圆角</source>
        <translation>Rounded</translation>
    </message>
    <message>
        <source>字体</source>
        <translation>Font</translation>
    </message>
    <message>
        <source>系统默认</source>
        <translation>System default</translation>
    </message>
    <message>
        <source>%1（未安装）</source>
        <translation>%1 (not installed)</translation>
    </message>
    <message>
        <source>插入时间</source>
        <translation>Insert time</translation>
    </message>
    <message>
        <source>水印排布方式</source>
        <translation>Watermark layout</translation>
    </message>
    <message>
        <source>透明度</source>
        <translation>Opacity</translation>
    </message>
    <message>
        <source>线宽（悬停滚轮调整）</source>
        <translation>Line width (scroll while hovering)</translation>
    </message>
    <message>
        <source>水印文字，点右侧时钟插入时间</source>
        <translation>Watermark text — click the clock to insert the time</translation>
    </message>
    <message>
        <source>水印文字</source>
        <translation>Watermark text</translation>
    </message>
    <message>
        <source>块大小不到 40 时，号码仍可能被还原；常见词语在任何块大小下都可能被猜出。要彻底去除，请用智能擦除的“整个框都补掉”。</source>
        <translation>Below a block size of 40 numbers may still be read back; common words may be guessed at any size. To remove text for good, use Smart erase with “Fill the whole box”.</translation>
    </message>
    <message>
        <source>模糊强度 1 到 20 都可能被还原，请勿用来遮盖机密文字。要彻底去除，请用智能擦除的“整个框都补掉”。</source>
        <translation>Blurred text may be read back at every strength from 1 to 20; do not hide secrets with it. To remove text for good, use Smart erase with “Fill the whole box”.</translation>
    </message>
    <message>
        <source>样式</source>
        <translation>Style</translation>
    </message>
</context>
<context>
    <name>tavrel::ui::ColorBoard</name>
    <message>
        <source>颜色</source>
        <translation>Color</translation>
    </message>
    <message>
        <source>饱和度与明度</source>
        <translation>Saturation and brightness</translation>
    </message>
    <message>
        <source>色相</source>
        <translation>Hue</translation>
    </message>
    <message>
        <source>透明度</source>
        <translation>Opacity</translation>
    </message>
    <message>
        <source>当前颜色</source>
        <translation>Current color</translation>
    </message>
    <message>
        <source>十六进制颜色</source>
        <translation>Hex color</translation>
    </message>
    <message>
        <source>色板</source>
        <translation>Palette</translation>
    </message>
    <message>
        <source>重置</source>
        <translation>Reset</translation>
    </message>
    <message>
        <source>恢复成默认的 10 个预设色（自己加的、删掉的、排过序的都还原）</source>
        <translation>Restore the 10 default colors (undoes everything added, removed or reordered)</translation>
    </message>
    <message>
        <source>色板是空的：点 ＋ 加入当前颜色，或点「重置」恢复默认。按住色块拖动可以调整顺序</source>
        <translation>The palette is empty: click + to add the current color, or Reset to restore the defaults. Drag a swatch to reorder.</translation>
    </message>
</context>
<context>
    <name>tavrel::ui::ColorChipRow</name>
    <message>
        <source>%1（拖动调整顺序，按 Delete 移出色板）</source>
        <translation>%1 (drag to reorder, Delete removes it from the palette)</translation>
    </message>
    <message>
        <source>把当前颜色加进色板</source>
        <translation>Add the current color to the palette</translation>
    </message>
    <message>
        <source>色板已满（最多 %1 个颜色）</source>
        <translation>The palette is full (%1 colors at most)</translation>
    </message>
</context>
<context>
    <name>tavrel::ui::ColorSvArea</name>
    <message>
        <source>饱和度 %1%，明度 %2%</source>
        <translation>Saturation %1%, brightness %2%</translation>
    </message>
</context>
<context>
    <name>tavrel::ui::EyedropperButton</name>
    <message>
        <source>取色器</source>
        <translation>Eyedropper</translation>
    </message>
    <message>
        <source>取色：点一下，再点画面上任意位置吸取颜色（Esc 取消）</source>
        <translation>Eyedropper: click, then click anywhere on the screen to pick a color (Esc to cancel)</translation>
    </message>
</context>
<context>
    <name>tavrel::ui::EyedropperLayer</name>
    <message>
        <source>取色器</source>
        <translation>Eyedropper</translation>
    </message>
</context>
<context>
    <name>tavrel::ui::LongCaptureMode</name>
    <message>
        <source>接不上了：请往回滚一点，再慢慢滚动</source>
        <translation>Lost the page: scroll back a little, then on more slowly</translation>
    </message>
    <message>
        <source>长图已到长度上限，请保存或复制</source>
        <translation>The long screenshot has reached its limit — save or copy it</translation>
    </message>
    <message>
        <source>屏幕变了或抓不到画面：请先保存或复制已拼好的部分</source>
        <translation>The screen has changed or cannot be captured: save or copy what has been stitched</translation>
    </message>
</context>
<context>
    <name>tavrel::ui::LongCaptureToolbar</name>
    <message>
        <source>长截图</source>
        <translation>Long screenshot</translation>
    </message>
    <message>
        <source>保存</source>
        <translation>Save</translation>
    </message>
    <message>
        <source>贴图</source>
        <translation>Pin</translation>
    </message>
    <message>
        <source>复制</source>
        <translation>Copy</translation>
    </message>
    <message>
        <source>编辑</source>
        <translation>Edit</translation>
    </message>
    <message>
        <source>取消</source>
        <translation>Cancel</translation>
    </message>
</context>
<context>
    <name>tavrel::ui::PanelResizeHandle</name>
    <message>
        <source>调整侧边栏宽度</source>
        <translation>Resize sidebar</translation>
    </message>
</context>
<context>
    <name>tavrel::ui::PositionPicker</name>
    <message>
        <source>居中</source>
        <translation>Center</translation>
    </message>
    <message>
        <source>左上</source>
        <translation>Top left</translation>
    </message>
    <message>
        <source>上</source>
        <translation>Top</translation>
    </message>
    <message>
        <source>右上</source>
        <translation>Top right</translation>
    </message>
    <message>
        <source>左</source>
        <translation>Left</translation>
    </message>
    <message>
        <source>右</source>
        <translation>Right</translation>
    </message>
    <message>
        <source>左下</source>
        <translation>Bottom left</translation>
    </message>
    <message>
        <source>下</source>
        <translation>Bottom</translation>
    </message>
    <message>
        <source>右下</source>
        <translation>Bottom right</translation>
    </message>
    <message>
        <source>自定义</source>
        <translation>Custom</translation>
    </message>
    <message>
        <source>位置</source>
        <translation>Position</translation>
    </message>
</context>
</TS>
